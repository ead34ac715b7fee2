#include "tests/plugin/converter/Converters.h"
#include "tests/plugin/converter/LiteralSignals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Offers a hook between the chunk files and the correction.
class AdjustedConverter : public QuietConverter {
public:
  std::function<void(AdjustedConverter&)> adjust = [](AdjustedConverter&) {};
  bool afterChunkFilesHook() override {
    adjust(*this);
    return true;
  }
};

std::vector<std::string> chunkFilesOf(const ChosenRecording& chosen) {
  std::vector<std::string> contents;
  for (const std::string& name : chosen.folder.names())
    if (name.find("Chunk") != std::string::npos) contents.push_back(readFile(chosen.folder.path(name)));
  return contents;
}

TEST(SinglePass, WithNothingToCorrectTheChunkFilesAreUntouched) {
  ChosenRecording chosen(wavyRecording(2, 300, 100));
  AdjustedConverter converter;
  converter.options.selectTimeInterval = true;
  chosen.host.floatAnswers = {100, 2000};
  chosen.host.integerAnswers = {0};
  Lines before;
  Lines after;
  converter.adjust = [&](AdjustedConverter&) { before = chunkFilesOf(chosen); };
  chosen.host.onCall = [&](const std::string& call) {
    if (call == "log " + line("Writing CTC")) after = chunkFilesOf(chosen);
  };
  EXPECT_TRUE(converter.start());
  EXPECT_EQ(before.size(), 32u);
  EXPECT_EQ(before, after);
  EXPECT_FALSE(chosen.host.logged(line("Processing channel #0")));
}

TEST(SinglePass, NamesTheProcessedChannelByItsChannelNumber) {
  ChosenRecording chosen(wavyRecording(5, 300, 100));
  QuietConverter converter;
  converter.options.selectChannels = true;
  converter.options.offerAverageReference = true;
  chosen.host.dialogIntegers = {{1, 4}, {6, 2}};
  chosen.host.integerAnswers = {2, 5, 3, 0};
  chosen.host.yesNoAnswers = {0, 0};
  EXPECT_TRUE(converter.start());
  const Lines log = chosen.host.logLines();
  ASSERT_GT(log.size(), 35u);
  EXPECT_EQ(log[33], line("Processing channel #4"));
  EXPECT_EQ(log[34], line("Processing channel #2"));
  EXPECT_EQ(log[35], line("Writing CTC"));
}

TEST(SinglePass, AChannelOfWeightZeroAddsNothingToTheReferenceButHasItSubtracted) {
  Recording recording = wavyRecording(3, 200, 100);
  recording.samples[1][50] = std::numeric_limits<double>::infinity(); // taken as 0
  ChosenRecording chosen(recording);
  AdjustedConverter converter;
  converter.options.offerAverageReference = true;
  chosen.host.dialogIntegers = {{6, 2}};
  chosen.host.integerAnswers = {0};
  converter.options.selectTimeInterval = true; // for a name of its own
  chosen.host.dialogIntegers[2] = 1;
  converter.adjust = [](AdjustedConverter& c) { c.averageReferenceWeights = {0.5, 0.0, 0.5}; };
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_0-2000ms.ctc"));
  recording.samples[1][50] = 0;
  for (size_t t = 0; t < 200; ++t) {
    const double reference = 0.5 * recording.samples[0][t] + 0.5 * recording.samples[2][t];
    for (size_t c = 0; c < 3; ++c)
      ASSERT_NEAR(output.samples[c][t], recording.samples[c][t] - reference, 2e-5) << c << " " << t;
  }
}

TEST(SinglePass, SamplesThatAreNotNumbersAreTakenAsZeroAndLogged) {
  Recording recording = wavyRecording(3, 300, 100);
  Recording cleaned = recording;
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<std::pair<size_t, double>> bad = {
      {0, std::numeric_limits<double>::quiet_NaN()}, {17, infinity}, {299, -infinity}};
  for (const auto& [at, value] : bad) {
    recording.samples[1][at] = value;
    cleaned.samples[1][at] = 0;
  }
  const auto filtered = [](const Recording& input, Lines& log) {
    ChosenRecording chosen(input);
    QuietConverter converter;
    converter.options.applyFilters = true;
    chosen.host.integerAnswers = {0, 1, 0};
    chosen.host.floatAnswers = {0, 20};
    EXPECT_TRUE(converter.start());
    log = chosen.host.logLines();
    return readOutput(chosen.folder.path("run1_LP20.ctc")).samples;
  };
  Lines log;
  Lines cleanLog;
  const Channels output = filtered(recording, log);
  EXPECT_EQ(output, filtered(cleaned, cleanLog));
  EXPECT_EQ(log[33], line("Processing channel #0"));
  EXPECT_EQ(log[34], line("Processing channel #1"));
  EXPECT_EQ(log[35], line("Channel #1: 3 samples that are not numbers were set to 0."));
  EXPECT_EQ(log[36], line("Processing channel #2"));
  log.erase(log.begin() + 35);
  EXPECT_EQ(log, cleanLog);
}

TEST(SinglePass, TheSplitAtOneHertzAloneGivesTheChannelBack) {
  const Recording recording = wavyRecording(2, 1500, 250);
  ChosenRecording chosen(recording);
  AdjustedConverter converter;
  converter.options.correctArtifacts = true;
  converter.adjust = [](AdjustedConverter& c) { c.switches.correctGradient = false; };
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {1};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_GRA.ctc"));
  for (size_t c = 0; c < 2; ++c)
    for (size_t t = 0; t < 1500; ++t)
      ASSERT_NEAR(output.samples[c][t], recording.samples[c][t], 2e-5) << c << " " << t;
}

// The ocular stage has a place in the run and no body: switched on it changes nothing and stops nothing.
TEST(SinglePass, TheOcularStageLeavesTheChannelAsItIs) {
  const Recording recording = wavyRecording(2, 1500, 250);
  ChosenRecording chosen(recording);
  AdjustedConverter converter;
  converter.options.correctArtifacts = true;
  converter.adjust = [](AdjustedConverter& c) {
    c.switches.correctGradient = false;
    c.switches.correctOcular = true;
  };
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {1};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_GRA.ctc"));
  for (size_t c = 0; c < 2; ++c)
    for (size_t t = 0; t < 1500; ++t)
      ASSERT_NEAR(output.samples[c][t], recording.samples[c][t], 2e-5) << c << " " << t;
}

TEST(SinglePass, TheRestIsTakenFromTheStartOfTheBufferNotOfTheInterval) {
  // With a margin in front of the interval, high-passed signal and rest are five samples apart: the kept
  // alignment. Without any correction between them the buffer's own samples come back.
  const Recording recording = wavyRecording(1, 1500, 250);
  ChosenRecording chosen(recording);
  AdjustedConverter converter;
  converter.options.correctArtifacts = true;
  converter.options.selectTimeInterval = true;
  converter.adjust = [](AdjustedConverter& c) { c.switches.correctGradient = false; };
  chosen.host.floatAnswers = {1000, 4000};
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {1};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_1000-4000ms_GRA.ctc"));
  ASSERT_EQ(output.nrOfTimePoints(), 750);
  for (size_t t = 0; t < 750; ++t)
    ASSERT_NEAR(output.samples[0][t], recording.samples[0][250 - 5 + t], 2e-5) << t;
}

TEST(SinglePass, ARecordingWithoutSequenceStaysAsItIsAndIsMarkedWithoutTriggers) {
  Recording recording;
  recording.samplingFrequency = 250;
  recording.samples.assign(2, std::vector<double>(1000, 12.5));
  ChosenRecording chosen(recording);
  PluginConverter converter;
  chosen.host.integerAnswers = {1};
  chosen.host.yesNoAnswers = {0};
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(chosen.host.questions().size(), 5u) << "no window question";
  for (const char* message : {"Number of volumes: 0", "Number of slices per volume: 0", "First slice: 0"})
    EXPECT_TRUE(chosen.host.logged(line(message))) << message;
  EXPECT_FALSE(chosen.host.logged(line("Writing MR gradient triggers")));
  const Recording output = readOutput(chosen.folder.path("run1_GRA.ctc"));
  for (const std::vector<double>& channel : output.samples)
    for (const double sample : channel) ASSERT_NEAR(sample, 12.5, 1e-5);
  EXPECT_NE(readFile(chosen.folder.path("run1_GRA_ArtifactsTriggers.prt")).find("NrOfConditions:     0"),
            std::string::npos);
}

} // namespace
} // namespace emeg
