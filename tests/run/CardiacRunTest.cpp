#include "tests/run/PluginRun.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>

namespace emeg::test {
namespace {

using testing::ElementsAre;

constexpr int nrOfChannels = 3;

/// A minute in the scanner with a heart that beats about every 0.9 s.
struct BeatingRecording {
  ScannedRecording scan;
  std::vector<std::vector<double>> pulse; ///< per channel, microvolts
  std::vector<double> beats;              ///< seconds
};

BeatingRecording beating() {
  BurstTrain train = BurstTrain::withGaps();
  train.nrOfVolumes = 60;
  train.seconds = 66;
  BeatingRecording made{scanned(train, nrOfChannels), {}, {}};
  for (double t = 0.4; t < train.seconds;) {
    made.beats.push_back(t);
    t += 0.9 + 0.05 * std::sin(0.7 * t) + 0.02 * std::sin(5.1 * t);
  }
  for (size_t c = 0; c < nrOfChannels; ++c) {
    std::vector<double> pulse(train.nrOfTimePoints(), 0.0);
    for (const double beat : made.beats) {
      for (size_t i = 0; i < pulse.size(); ++i) {
        const double t = static_cast<double>(i) / train.samplingFrequency - beat;
        if (t < -0.2 || t > 0.8) continue;
        const auto bump = [t](double centre, double width) {
          return std::exp(-(t - centre) * (t - centre) / (width * width));
        };
        pulse[i] += 90 * bump(0.1, 0.05) - (60 - 10 * static_cast<double>(c)) * bump(0.25, 0.07) +
                    30 * bump(0.45, 0.08);
      }
    }
    std::vector<double>& samples = made.scan.recording.samples[c];
    for (size_t i = 0; i < samples.size(); ++i) samples[i] += pulse[i];
    made.pulse.push_back(std::move(pulse));
  }
  return made;
}

/// The text behind `label` in the only log line that begins with it; fails without one.
std::string behind(const HostRunResult& result, const std::string& label) {
  const std::string begin = "// EMEG artifacts > " + label;
  std::string found;
  int count = 0;
  for (const std::string& line : result.logLines()) {
    if (line.rfind(begin, 0) != 0) continue;
    found = line.substr(begin.size());
    ++count;
  }
  EXPECT_EQ(count, 1) << label;
  return found;
}

class CardiacRun : public PluginRun {
protected:
  /// Choice 2 with the window of 150 slices.
  static nlohmann::json bothCorrections(const std::string& ctc, bool volumeWise) {
    return answersInOrder(ctc, {2, volumeWise ? "yes" : "no", 150});
  }

  /// Onsets of a set of triggers in seconds.
  std::vector<double> triggers(const std::string& file, const std::string& name) const {
    std::vector<double> seconds;
    const std::string text = readFile(path(file));
    const size_t start = text.find("\r\n" + name + "\r\n");
    if (start == std::string::npos) return seconds;
    size_t at = start + name.size() + 4;
    const int count = std::stoi(text.substr(at));
    for (int i = 0; i < count; ++i) {
      at = text.find("\r\n", at) + 2;
      seconds.push_back(std::stod(text.substr(at)) * 1e-6);
    }
    return seconds;
  }
};

class CardiacRunInBothModes : public CardiacRun, public testing::WithParamInterface<bool> {};

} // namespace

TEST_P(CardiacRunInBothModes, MakesTheseCallsInThisOrder) {
  const BeatingRecording made = beating();
  const std::string ctc = write(made.scan.recording);
  const std::string prt = write("run1.prt", protocolText("msec", {"Rest\r\n1\r\n0 500\r\nColor: 1 2 3"}));
  nlohmann::json given = bothCorrections(ctc, GetParam());
  given["files"]["*.prt"] = prt;
  const HostRunResult result = run(given);
  ASSERT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;

  const std::string perMinute = behind(result, "Heart pulsations per minute: ");
  const std::string beats = behind(result, "TimeCorrectedPulses: 3 channels X ");
  ExpectedCalls expected = ExpectedCalls::ofARun()
                               .choosesNo("CCD")
                               .chooses("PRT", prt)
                               .chooses("CTC", ctc)
                               .logs("Defining parameters");
  expected.asksCorrection(2)
      .asksVolumeWise(GetParam() ? 1 : 0)
      .createsChunks()
      .logs("Pre-processing channel #0")
      .logs("Automatic detection of MR sequence parameters")
      .logs("Number of volumes: 60")
      .logs("Number of slices per volume: 10")
      .logs("First slice: 0")
      .logs("Volume duration (s): #")
      .logs("Slice duration (s): #")
      .logs("First trigger time (s): #")
      .logs("Writing MR gradient triggers")
      .asksWindow("10.00", 150)
      .logs("Pre-processing channel #1")
      .logs("Pre-processing channel #2")
      .logs("Automatic detection of heart pulses")
      .logs("Heart pulsations per minute: " + perMinute)
      .logs("Writing heart pulse triggers")
      .logs("Removing heart pulse artifacts from channel #0")
      .logs("Removing heart pulse artifacts from channel #1")
      .logs("Removing heart pulse artifacts from channel #2")
      .logs("PulseModel: 3 channels X 16500 timepoints")
      .logs("TimeCorrectedPulses: 3 channels X " + beats)
      .writesEverything()
      .returns(true);
  EXPECT_EQ(differenceOf(withoutMeasuredNumbers(result.transcript).calls, expected), "");

  double rate = 0;
  int behindRate = 0;
  ASSERT_EQ(std::sscanf(perMinute.c_str(), "%lf%n", &rate, &behindRate), 1);
  EXPECT_EQ(perMinute.size(), static_cast<size_t>(behindRate));
  EXPECT_NEAR(rate, 60 / 0.9, 3);
  int nrOfEpochs = 0;
  int nrOfValues = 0;
  ASSERT_EQ(std::sscanf(beats.c_str(), "%d pulses X %d timepoints", &nrOfEpochs, &nrOfValues), 2);
  const auto nrOfPulses = triggers("run1_GRA_BCG_ArtifactsTriggers.prt", "HeartPulseTriggers").size();
  EXPECT_EQ(static_cast<size_t>(nrOfEpochs) + 2, nrOfPulses) << "one epoch for each inner pulse";
  EXPECT_EQ(nrOfValues % 2, 1);
}

TEST_P(CardiacRunInBothModes, WritesTheCorrectedRecordingAndBothKindsOfTriggers) {
  const BeatingRecording made = beating();
  const std::string ctc = write(made.scan.recording);
  const std::string input = readFile(ctc);
  ASSERT_EQ(run(bothCorrections(ctc, GetParam())).exitStatus, 0);
  EXPECT_THAT(names(), ElementsAre("run1.ctc", "run1_GRA_BCG.ccd", "run1_GRA_BCG.ctc",
                                   "run1_GRA_BCG_ArtifactsTriggers.prt"));
  EXPECT_EQ(readFile(ctc), input);

  const std::string triggerFile = "run1_GRA_BCG_ArtifactsTriggers.prt";
  EXPECT_EQ(triggers(triggerFile, "MRGradientTriggers").size(), 600u);
  const std::vector<double> pulses = triggers(triggerFile, "HeartPulseTriggers");
  ASSERT_GT(pulses.size(), made.beats.size() - 10);
  EXPECT_NE(readFile(path(triggerFile)).find("Color:              255 64 64"), std::string::npos);
  // Every pulse lies at the same distance from a beat.
  std::vector<double> delays;
  for (const double pulse : pulses) {
    double delay = 1e9;
    for (const double beat : made.beats)
      if (std::abs(pulse - beat - 0.15) < std::abs(delay - 0.15)) delay = pulse - beat;
    delays.push_back(delay);
  }
  for (const double delay : delays) EXPECT_NEAR(delay, delays[delays.size() / 2], 0.05);
  for (size_t i = 1; i < pulses.size(); ++i) EXPECT_NEAR(pulses[i] - pulses[i - 1], 0.9, 0.12);

  const Recording corrected = readOutput(path("run1_GRA_BCG.ctc"));
  const double rate = made.scan.recording.samplingFrequency;
  for (size_t c = 0; c < nrOfChannels; ++c) {
    double left = 0;
    double all = 0;
    for (auto i = static_cast<size_t>(pulses.front() * rate); i < static_cast<size_t>(pulses.back() * rate);
         ++i) {
      const double residual = corrected.samples[c][i] - made.scan.clean[c][i];
      left += residual * residual;
      all += made.pulse[c][i] * made.pulse[c][i];
    }
    EXPECT_LT(left, 0.25 * all) << "channel " << c;
  }
}

INSTANTIATE_TEST_SUITE_P(VolumeWiseAndSliceWise, CardiacRunInBothModes, testing::Bool());

TEST_F(CardiacRun, OfAFlatRecordingFindsNoPulsesAndChangesNothing) {
  Recording flat;
  flat.samplingFrequency = 500;
  flat.samples.assign(2, std::vector<double>(5000, 0.0));
  const HostRunResult result = run(bothCorrections(write(flat), true));
  ASSERT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
  EXPECT_EQ(behind(result, "TimeCorrectedPulses: "), "2 channels X 0 pulses X 0 timepoints");
  EXPECT_EQ(behind(result, "PulseModel: "), "2 channels X 2500 timepoints");
  const Recording corrected = readOutput(path("run1_GRA_BCG.ctc"));
  for (const std::vector<double>& channel : corrected.samples)
    for (const double sample : channel) ASSERT_EQ(sample, 0.0);
}

TEST_F(CardiacRun, OfRecordingsOfAFewSamplesEnds) {
  for (const int nrOfTimePoints : {1, 2, 3, 10, 100, 700}) {
    SCOPED_TRACE(nrOfTimePoints);
    const Recording noise = shortNoise(2, nrOfTimePoints);
    const HostRunResult result = run(bothCorrections(write(noise), false));
    EXPECT_EQ(result.exitStatus, 0) << result.standardOutput << result.standardError;
    const Recording corrected = readOutput(path("run1_GRA_BCG.ctc"));
    ASSERT_EQ(corrected.nrOfTimePoints(), nrOfTimePoints);
    for (const std::vector<double>& channel : corrected.samples)
      for (const double sample : channel) ASSERT_TRUE(std::isfinite(sample));
  }
}

} // namespace emeg::test
