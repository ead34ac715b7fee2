#include "engine/beats/BeatStrategy.h"
#include "engine/timing/TimingStrategy.h"
#include "tests/plugin/converter/Converters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Every channel's artifact is 100.
class EvenBeats : public BeatStrategy {
public:
  void find(const BcgSeries& series, const std::vector<double>&, Observer&) override {
    nrOfSeries = series.channels.size();
  }
  void replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t, Observer&) override {
    models.push_back(pulseChannel);
    for (double& value : series) value = 100;
  }
  size_t nrOfSeries = 0;
  std::vector<int> models;
};

/// The plug-in's converter without gradient stage, whose heart beats are the test's affair.
class RoleConverter : public PluginConverter {
public:
  bool afterChunkFilesHook() override {
    switches.correctGradient = false;
    return true;
  }
  bool processChannels() override {
    QuietRunsTiming timing;
    return correctChannels(timing, beatStrategy);
  }
  EvenBeats beatStrategy;
};

ChannelRole muscleRole() {
  ChannelRole role;
  role.showsSequence = false;
  role.takesPartInPulses = false;
  role.takesPartInReference = false;
  return role;
}

Lines channelLines(const ScriptedHost& host) {
  Lines lines;
  for (const std::string& text : host.logLines())
    if (text.find("channel #") != std::string::npos) lines.push_back(text);
  return lines;
}

} // namespace

TEST(ChannelRoles, WithoutAnyAllChannelsAreAlike) {
  const RoleConverter converter;
  const ChannelRole role = converter.roleOf(0);
  EXPECT_TRUE(role.showsSequence);
  EXPECT_TRUE(role.takesPartInPulses);
  EXPECT_TRUE(role.takesPartInReference);
}

TEST(ChannelRoles, AChannelWithoutPulsesIsFinishedInOnePassBehindTheOthers) {
  const Recording recording = wavyRecording(3, 1000, 250);
  ChosenRecording chosen(recording);
  chosen.host.integerAnswers = {2};
  chosen.host.yesNoAnswers = {1};
  RoleConverter converter;
  converter.channels.roles = {muscleRole()}; // of the first channel; the others have none
  ASSERT_TRUE(converter.start());
  EXPECT_EQ(channelLines(chosen.host),
            (Lines{line("Pre-processing channel #1"), line("Pre-processing channel #2"),
                   line("Processing channel #0"), line("Removing heart pulse artifacts from channel #1"),
                   line("Removing heart pulse artifacts from channel #2")}));
  EXPECT_EQ(converter.beatStrategy.nrOfSeries, 2u);
  EXPECT_THAT(converter.beatStrategy.models, testing::ElementsAre(0, 1));

  // Split and put together again: what has no pulses stays, from the others the estimate is taken away.
  const Recording output = readOutput(chosen.folder.path("run1_GRA_BCG.ctc"));
  for (size_t t = 100; t < 900; t += 50) {
    EXPECT_NEAR(output.samples[0][t], recording.samples[0][t], 1e-3);
    EXPECT_NEAR(output.samples[1][t], recording.samples[1][t] - 100, 20);
  }
}

TEST(ChannelRoles, WithoutAnyPulseChannelNoBeatIsLookedFor) {
  ChosenRecording chosen(wavyRecording(2, 1000, 250));
  chosen.host.integerAnswers = {2};
  chosen.host.yesNoAnswers = {1};
  RoleConverter converter;
  converter.channels.roles = {muscleRole(), muscleRole()};
  ASSERT_TRUE(converter.start());
  EXPECT_FALSE(chosen.host.logged(line("Automatic detection of heart pulses")));
  EXPECT_TRUE(converter.beatStrategy.models.empty());
}

TEST(ChannelRoles, TheAverageReferenceLeavesOutWhatDoesNotBelongToIt) {
  const Recording recording = wavyRecording(3, 200, 100);
  ChosenRecording chosen(recording);
  QuietConverter converter;
  converter.options.offerAverageReference = true;
  converter.options.selectTimeInterval = true; // for a name of its own
  chosen.host.integerAnswers = {0};
  chosen.host.dialogIntegers = {{2, 1}, {6, 2}};
  converter.channels.roles = {ChannelRole(), muscleRole(), ChannelRole()};
  ASSERT_TRUE(converter.start());
  const Recording output = readOutput(chosen.folder.path("run1_0-2000ms.ctc"));
  for (size_t t = 0; t < 200; ++t) {
    const double reference = 0.5 * recording.samples[0][t] + 0.5 * recording.samples[2][t];
    ASSERT_NEAR(output.samples[0][t], recording.samples[0][t] - reference, 2e-5);
    ASSERT_EQ(output.samples[1][t], static_cast<double>(static_cast<float>(recording.samples[1][t])));
  }
}

} // namespace emeg
