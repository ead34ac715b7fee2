#include "engine/beats/BeatStrategy.h"
#include "engine/timing/TimingStrategy.h"
#include "tests/artifacts/BurstTrain.h"
#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Two channels of a scan with pauses between its volumes.
Recording scan() {
  BurstTrain train = BurstTrain::withGaps();
  Recording recording;
  recording.samplingFrequency = train.samplingFrequency;
  for (const uint64_t seed : {1u, 2u}) {
    train.seed = seed;
    recording.samples.push_back(train.recording());
  }
  return recording;
}

/// Slices per second of that scan, as the window question shows it.
const std::string windowQuestion = "integer Window half-length in slices (10.00 slices/s): [150, 1, 1000]";

struct GradientRun : ::testing::Test {
  GradientRun() : chosen(scan()) {
    chosen.host.integerAnswers = {1, 150};
    chosen.host.yesNoAnswers = {1};
  }
  Lines triggerLines(const std::string& name) const {
    Lines found;
    const std::string text = readFile(chosen.folder.path(name));
    for (size_t at = text.find("MRGradientTriggers"); at != std::string::npos && at < text.size();) {
      const size_t end = std::min(text.find("\r\n", at), text.size());
      found.push_back(text.substr(at, end - at));
      at = end + 2;
    }
    return found;
  }
  ChosenRecording chosen;
};

TEST_F(GradientRun, AsksForTheWindowOnceAndWritesOneMarkerPerSlice) {
  PluginConverter converter;
  ASSERT_TRUE(converter.start());
  const Lines questions = chosen.host.questions();
  ASSERT_EQ(questions.size(), 6u);
  EXPECT_EQ(questions.back(), windowQuestion);
  const Lines log = chosen.host.logLines();
  EXPECT_EQ(std::count(log.begin(), log.end(), line("Automatic detection of MR sequence parameters")), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), line("Writing MR gradient triggers")), 1);
  EXPECT_TRUE(chosen.host.logged(line("Number of volumes: 12")));
  EXPECT_TRUE(chosen.host.logged(line("Number of slices per volume: 10")));
  EXPECT_EQ(converter.sequence.windowHalfLength, 16) << "150 slices at 10 a second less a bit";

  const Lines triggers = triggerLines("run1_GRA_ArtifactsTriggers.prt");
  ASSERT_EQ(triggers.size(), 1u + 1 + 120 + 1);
  EXPECT_EQ(triggers[1], "120");
  EXPECT_EQ(triggers.back(), "Color:              64 64 255");
  const BurstTrain train = BurstTrain::withGaps();
  for (int v = 0; v < 12; ++v) {
    for (int s = 0; s < 10; ++s) {
      const std::string& text = triggers[static_cast<size_t>(2 + 10 * v + s)];
      ASSERT_EQ(text.size(), 24u);
      const double onset = std::stod(text.substr(0, 10));
      EXPECT_EQ(onset, std::stod(text.substr(10)));
      EXPECT_NEAR(onset * 1e-6, train.onset(v, s), 0.02) << v << " " << s;
    }
  }
}

TEST_F(GradientRun, TheWindowMayComeFromTheHostsDialogue) {
  chosen.host.dialogIntegers[0] = 40;
  PluginConverter converter;
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(chosen.host.questions().size(), 5u);
  EXPECT_EQ(converter.sequence.windowHalfLength, 5) << "40 slices at 10 a second less a bit, rounded up";
}

TEST_F(GradientRun, ACancelledWindowEndsTheRun) {
  for (const int answer : {0, -1}) {
    chosen.host.calls.clear();
    chosen.host.fileAnswers = {"", "", chosen.ctcPath()};
    chosen.host.integerAnswers = {1, answer};
    chosen.host.yesNoAnswers = {1};
    {
      PluginConverter converter;
      EXPECT_FALSE(converter.start());
    }
    const Lines log = chosen.host.logLines();
    EXPECT_EQ(log.back(), line("Plugin execution was aborted."));
    EXPECT_EQ(log[log.size() - 2], "");
    EXPECT_EQ(chosen.folder.names(), Lines{"run1.ctc"});
  }
}

TEST_F(GradientRun, AWindowOfZeroFromTheHostsDialogueEndsTheRun) {
  chosen.host.dialogIntegers[0] = 0;
  PluginConverter converter;
  EXPECT_FALSE(converter.start());
  EXPECT_EQ(chosen.host.logLines().back(), line("Plugin execution was aborted."));
  EXPECT_EQ(chosen.host.questions().size(), 5u);
}

TEST_F(GradientRun, AFlatFirstChannelLeavesTheDetectionToTheNext) {
  Recording recording = scan();
  recording.samples[0].assign(recording.samples[0].size(), 5.0);
  writeFile(chosen.ctcPath(), recording.bytes());
  PluginConverter converter;
  ASSERT_TRUE(converter.start());
  const Lines log = chosen.host.logLines();
  EXPECT_EQ(std::count(log.begin(), log.end(), line("Automatic detection of MR sequence parameters")), 2);
  EXPECT_EQ(std::count(log.begin(), log.end(), line("Number of volumes: 0")), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), line("Number of volumes: 12")), 1);
  const Recording output = readOutput(chosen.folder.path("run1_GRA.ctc"));
  for (const double sample : output.samples[0]) ASSERT_NEAR(sample, 5.0, 1e-4);
}

TEST_F(GradientRun, MarkersOfARestrictedIntervalCountFromItsStart) {
  PluginConverter converter;
  converter.options.selectTimeInterval = true;
  chosen.host.floatAnswers = {500, 15500};
  ASSERT_TRUE(converter.start());
  const Lines triggers = triggerLines("run1_500-15500ms_GRA_ArtifactsTriggers.prt");
  ASSERT_EQ(triggers.size(), 123u);
  const BurstTrain train = BurstTrain::withGaps();
  EXPECT_NEAR(std::stod(triggers[2].substr(0, 10)) * 1e-6, train.onset(0, 0) - 0.5, 0.02);
  EXPECT_NEAR(std::stod(triggers[121].substr(0, 10)) * 1e-6, train.onset(11, 9) - 0.5, 0.02);
  ASSERT_EQ(converter.protocolList.timeFactor, 1000000.0);
}

/// Finds no heart pulses, and the model of nothing.
class NoBeats : public BeatStrategy {
public:
  void find(const BcgSeries&, const std::vector<double>&, Observer&) override {}
  void replaceByEstimate(int, std::vector<double>& series, int64_t, Observer&) override {
    std::fill(series.begin(), series.end(), 0.0);
  }
};

class ConverterWithoutPulses : public PluginConverter {
  bool processChannels() override {
    QuietRunsTiming timing;
    NoBeats noBeats;
    return correctChannels(timing, noBeats);
  }
};

TEST_F(GradientRun, TwoPassesWithoutPulsesGiveTheGradientCorrectedChannels) {
  {
    PluginConverter single;
    ASSERT_TRUE(single.start());
  }
  chosen.host.fileAnswers = {"", "", chosen.ctcPath()};
  chosen.host.integerAnswers = {2, 150};
  chosen.host.yesNoAnswers = {1};
  ConverterWithoutPulses two;
  ASSERT_TRUE(two.start());
  const Recording one = readOutput(chosen.folder.path("run1_GRA.ctc"));
  const Recording other = readOutput(chosen.folder.path("run1_GRA_BCG.ctc"));
  double largest = 0;
  for (size_t c = 0; c < 2; ++c)
    for (size_t t = 400; t + 400 < one.samples[c].size(); ++t)
      largest = std::max(largest, std::abs(one.samples[c][t] - other.samples[c][t]));
  // What the rest holds above 5 Hz, between its ten values a second, is all that may differ.
  EXPECT_LT(largest, 0.01);
}

TEST_F(GradientRun, TheArtifactIsRemovedFromEveryChannelInBothModes) {
  const BurstTrain first = BurstTrain::withGaps();
  for (const int volumeWise : {0, 1}) {
    chosen.host.fileAnswers = {"", "", chosen.ctcPath()};
    chosen.host.integerAnswers = {1, 150};
    chosen.host.yesNoAnswers = {volumeWise};
    PluginConverter converter;
    ASSERT_TRUE(converter.start());
    const Recording output = readOutput(chosen.folder.path("run1_GRA.ctc"));
    for (size_t c = 0; c < 2; ++c) {
      BurstTrain train = first;
      train.seed = c + 1;
      const std::vector<double> clean = train.noise();
      const std::vector<double> artifact = train.artifact();
      double residual = 0;
      double before = 0;
      const auto start = static_cast<size_t>(3.0 * train.samplingFrequency);
      const auto end = static_cast<size_t>(12.0 * train.samplingFrequency);
      for (size_t t = start; t < end; ++t) {
        residual += std::pow(output.samples[c][t] - clean[t], 2);
        before += std::pow(artifact[t], 2);
      }
      EXPECT_LT(residual, before / 1000) << "30 dB, channel " << c << " mode " << volumeWise;
    }
  }
}

} // namespace
} // namespace emeg
