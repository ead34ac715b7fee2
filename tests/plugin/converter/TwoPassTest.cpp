#include "engine/beats/BeatStrategy.h"
#include "engine/timing/TimingStrategy.h"
#include "plugin/converter/correction/RunObserver.h"
#include "tests/plugin/converter/Converters.h"
#include "tests/plugin/converter/LiteralSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Heart beats that a test scripts.
class ScriptedBeats : public BeatStrategy {
public:
  explicit ScriptedBeats(ScriptedHost& host) : host_(host) {}
  void find(const BcgSeries& series, const std::vector<double>&, Observer&) override {
    host_.record("detect");
    seen.assign(series.channels.begin(), series.channels.end());
    length = series.length;
    rate = series.rate;
    if (!detected) throw RunEnded();
  }
  void replaceByEstimate(int channel, std::vector<double>& series, int64_t nrOfValues, Observer&) override {
    host_.record("model " + std::to_string(channel));
    EXPECT_EQ(series, seen[static_cast<size_t>(channel)]);
    EXPECT_EQ(nrOfValues, length);
    for (size_t k = 0; k < series.size(); ++k)
      series[k] = estimate ? estimate(channel, static_cast<int64_t>(k)) : 0.0;
    series.back() = 1e9; // the spare value: nothing of it may reach the output
  }
  bool detected = true;
  std::function<double(int, int64_t)> estimate; ///< of a channel at a knot; none: 0
  Channels seen;                                ///< the series as the search found them
  int64_t length = -1;
  float rate = 0;

private:
  ScriptedHost& host_;
};

/// The plug-in's converter with such heart beats, and without the gradient stage.
class PulseConverter : public PluginConverter {
public:
  explicit PulseConverter(ScriptedHost& host) : scripted(host) {}
  bool processChannels() override {
    QuietRunsTiming timing;
    return correctChannels(timing, scripted);
  }
  bool afterChunkFilesHook() override {
    switches.correctGradient = false;
    return true;
  }
  ScriptedBeats scripted;
};

double asFloat(double value) {
  return static_cast<double>(static_cast<float>(value));
}

/// The two passes over one channel, step by step.
struct PlainTwoPass {
  std::vector<double> series; ///< at the reduced rate
  std::vector<double> output;
};

PlainTwoPass plainTwoPass(const std::vector<double>& interval, const std::vector<double>& bufferStart,
                          double samplingFrequency, int log2Length, int64_t bcgStep,
                          const std::function<double(int64_t)>& estimate) {
  const auto n = static_cast<int64_t>(interval.size());
  const auto at = [](const std::vector<double>& v, int64_t i) { return v[static_cast<size_t>(i)]; };
  const std::vector<double> fast = plainFilter(interval, {{false, 2.0 / samplingFrequency, 3}}, log2Length);
  const auto restStep = static_cast<int64_t>(std::floor(samplingFrequency * 0.1));
  std::vector<double> rest;
  for (int64_t j = 0; j < n; j += restStep) rest.push_back(at(bufferStart, j) - at(fast, j));
  const std::vector<double> low = plainFilter(fast, {{true, 70.0 / samplingFrequency, 3}}, log2Length);

  PlainTwoPass result;
  for (int64_t j = 0; j < n; j += bcgStep) result.series.push_back(at(low, j));
  std::vector<double> knots;
  for (int64_t k = 0; k < static_cast<int64_t>(result.series.size()); ++k) knots.push_back(estimate(k));
  knots.push_back(0.0);
  const std::vector<double> pulses = plainSpline(knots, bcgStep, n);
  const std::vector<double> slow = plainSpline(rest, restStep, n);
  for (int64_t i = 0; i < n; ++i) result.output.push_back(asFloat(at(fast, i)) - at(pulses, i) + at(slow, i));
  return result;
}

struct TwoPass : ::testing::Test {
  void use(const Recording& newRecording) {
    recording = newRecording;
    converter.reset();
    chosen.reset(); // one host at a time
    chosen = std::make_unique<ChosenRecording>(recording);
    converter = std::make_unique<PulseConverter>(chosen->host);
    chosen->host.integerAnswers = {2};
    chosen->host.yesNoAnswers = {1};
  }
  Recording recording;
  std::unique_ptr<ChosenRecording> chosen;
  std::unique_ptr<PulseConverter> converter;
};

TEST_F(TwoPass, FirstReadsAllChannelsThenDetectsThenRemoves) {
  use(wavyRecording(2, 1000, 250));
  ASSERT_TRUE(converter->start());
  Lines calls;
  bool reached = false;
  for (const std::string& call : chosen->host.calls) {
    if (reached) calls.push_back(call);
    if (call == "log " + line("Creating chunk #32/32")) reached = true;
  }
  EXPECT_EQ(calls,
            (Lines{"log " + line("Pre-processing channel #0"), "log " + line("Pre-processing channel #1"),
                   "log " + line("Automatic detection of heart pulses"), "detect",
                   "log " + line("Removing heart pulse artifacts from channel #0"), "model 0",
                   "log " + line("Removing heart pulse artifacts from channel #1"), "model 1",
                   "log " + line("Writing CTC"), "log " + line("Writing PRT"), "log " + line("Writing CCD"),
                   "log " + line("Operations successfully executed!")}));
  EXPECT_EQ(chosen->folder.names(), (Lines{"run1.ctc", "run1_GRA_BCG.ccd", "run1_GRA_BCG.ctc",
                                           "run1_GRA_BCG_ArtifactsTriggers.prt"}));
}

TEST_F(TwoPass, AFailedDetectionEndsTheRunWithoutAMessageOfItsOwn) {
  use(wavyRecording(2, 1000, 250));
  converter->scripted.detected = false;
  EXPECT_FALSE(converter->start());
  EXPECT_EQ(chosen->host.calls.back(), "detect");
  EXPECT_TRUE(chosen->host.boxes().empty());
  converter.reset();
  EXPECT_EQ(chosen->folder.names(), Lines{"run1.ctc"});
}

TEST_F(TwoPass, SubtractsTheEstimateByItsSplineAtEveryReducedRate) {
  struct Rate {
    double samplingFrequency;
    int nrOfTimePoints;
    int log2Length;
    int64_t step;
  };
  for (const Rate& rate : {Rate{100, 400, 9, 1}, Rate{250, 600, 10, 1}, Rate{499, 600, 10, 1},
                           Rate{500, 700, 10, 2}, Rate{5000, 1903, 11, 20}}) {
    SCOPED_TRACE(rate.samplingFrequency);
    use(wavyRecording(2, rate.nrOfTimePoints, rate.samplingFrequency));
    const auto estimate = [](int channel, int64_t k) {
      return 3.0 * std::sin(0.37 * static_cast<double>(k) + channel) + 0.01 * static_cast<double>(k % 7);
    };
    converter->scripted.estimate = estimate;
    ASSERT_TRUE(converter->start());
    EXPECT_EQ(converter->scripted.length, (rate.nrOfTimePoints - 1) / rate.step + 1);
    EXPECT_EQ(converter->scripted.rate,
              static_cast<float>(rate.samplingFrequency / static_cast<double>(rate.step)));

    const Recording output = readOutput(chosen->folder.path("run1_GRA_BCG.ctc"));
    for (size_t c = 0; c < 2; ++c) {
      const PlainTwoPass plain =
          plainTwoPass(recording.samples[c], recording.samples[c], rate.samplingFrequency, rate.log2Length,
                       rate.step, [&](int64_t k) { return estimate(static_cast<int>(c), k); });
      ASSERT_EQ(converter->scripted.seen[c].size(), plain.series.size() + 1) << "one spare value";
      for (size_t k = 0; k < plain.series.size(); ++k) {
        ASSERT_NEAR(converter->scripted.seen[c][k], plain.series[k], 1e-4) << c << " " << k;
        ASSERT_EQ(converter->scripted.seen[c][k], asFloat(converter->scripted.seen[c][k]));
      }
      ASSERT_EQ(output.samples[c].size(), plain.output.size());
      for (size_t t = 0; t < plain.output.size(); ++t)
        ASSERT_NEAR(output.samples[c][t], plain.output[t], 1e-4) << c << " " << t;
    }
  }
}

TEST_F(TwoPass, WithoutAnyEstimateEqualsTheSinglePassWhereTheRestIsSlow) {
  // Nothing between 1 Hz and 8 Hz: the rest at ten values a second says all about what is below.
  Recording slowAndFast;
  slowAndFast.samplingFrequency = 500;
  slowAndFast.samples.emplace_back();
  for (int t = 0; t < 4000; ++t) {
    const double seconds = t / 500.0;
    slowAndFast.samples[0].push_back(
        asFloat(20 * std::sin(2 * 3.14159265358979 * 20 * seconds) + 30 * std::sin(0.7 * seconds)));
  }
  use(slowAndFast);
  ASSERT_TRUE(converter->start());
  const Recording two = readOutput(chosen->folder.path("run1_GRA_BCG.ctc"));
  for (size_t t = 500; t < 3500; ++t) ASSERT_NEAR(two.samples[0][t], slowAndFast.samples[0][t], 2e-3) << t;
}

TEST_F(TwoPass, TheRestIsTakenFromTheStartOfTheBufferNotOfTheInterval) {
  use(wavyRecording(1, 1500, 250));
  converter->options.selectTimeInterval = true;
  chosen->host.floatAnswers = {1000, 4000};
  ASSERT_TRUE(converter->start());
  const std::vector<double>& all = recording.samples[0];
  const std::vector<double> interval(all.begin() + 250, all.begin() + 1000);
  const std::vector<double> buffer(all.begin() + 245, all.begin() + 1005);
  const PlainTwoPass plain = plainTwoPass(interval, buffer, 250, 10, 1, [](int64_t) { return 0.0; });
  const Recording output = readOutput(chosen->folder.path("run1_1000-4000ms_GRA_BCG.ctc"));
  ASSERT_EQ(output.nrOfTimePoints(), 750);
  for (size_t t = 0; t < 750; ++t) ASSERT_NEAR(output.samples[0][t], plain.output[t], 1e-4) << t;
}

TEST_F(TwoPass, FiltersAndDecimatesAfterTheRestIsBack) {
  use(wavyRecording(1, 600, 250));
  converter->options.applyFilters = true;
  chosen->host.integerAnswers = {2, 3, 0};
  chosen->host.floatAnswers = {0, 0};
  ASSERT_TRUE(converter->start());
  const PlainTwoPass plain =
      plainTwoPass(recording.samples[0], recording.samples[0], 250, 10, 1, [](int64_t) { return 0.0; });
  const std::vector<double> filtered = plainFilter(plain.output, {{true, 1.0 / 3, 3}}, 10);
  const Recording output = readOutput(chosen->folder.path("run1_dec3_GRA_BCG.ctc"));
  ASSERT_EQ(output.nrOfTimePoints(), 200);
  for (size_t t = 0; t < 200; ++t) ASSERT_NEAR(output.samples[0][t], filtered[3 * t], 1e-4) << t;
}

TEST_F(TwoPass, SamplesThatAreNotNumbersAreLoggedInTheFirstPassOnly) {
  Recording broken = wavyRecording(2, 500, 250);
  broken.samples[0][100] = std::numeric_limits<double>::quiet_NaN();
  broken.samples[0][101] = std::numeric_limits<double>::infinity();
  use(broken);
  ASSERT_TRUE(converter->start());
  const Lines log = chosen->host.logLines();
  EXPECT_EQ(log[33], line("Pre-processing channel #0"));
  EXPECT_EQ(log[34], line("Channel #0: 2 samples that are not numbers were set to 0."));
  int lines = 0;
  for (const std::string& text : log)
    if (text.find("not numbers") != std::string::npos) ++lines;
  EXPECT_EQ(lines, 1);
  const Recording output = readOutput(chosen->folder.path("run1_GRA_BCG.ctc"));
  for (const std::vector<double>& channel : output.samples)
    for (const double sample : channel) ASSERT_TRUE(std::isfinite(sample));
}

TEST_F(TwoPass, ASingleTimePointIsHandled) {
  use(wavyRecording(1, 1, 250));
  EXPECT_TRUE(converter->start());
  EXPECT_EQ(readOutput(chosen->folder.path("run1_GRA_BCG.ctc")).nrOfTimePoints(), 1);
}

TEST_F(TwoPass, AveragesTheReferenceOverTheCorrectedChannels) {
  use(wavyRecording(3, 500, 250));
  converter->options.offerAverageReference = true;
  chosen->host.dialogIntegers[6] = 2;
  ASSERT_TRUE(converter->start());
  const Recording output = readOutput(chosen->folder.path("run1_GRA_BCG.ctc"));
  for (size_t t = 0; t < 500; ++t)
    ASSERT_NEAR(output.samples[0][t] + output.samples[1][t] + output.samples[2][t], 0.0, 1e-4) << t;
}

} // namespace
} // namespace emeg
