#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

const std::string choiceQuestion =
    "integer Please make a choice for EEG-fMRI artifact correction:\n"
    "1 - Correct MRI gradient artifact only.\n"
    "2 - Correct MRI gradient artifact and BCG artifact (experimental)\n\n"
    "Please Note: BCG artifact correction is only experimental and its use may lead to instability or "
    "unsatisfactory results.\n"
    "In such cases, please use the general purpose ICA or OBS methods (available among the other EEG-MEG "
    "plugins)\n [1, 1, 2]";

const std::string volumeWiseQuestion =
    "yesno Should artifact correction be performed volume-wise (preferred)?\n"
    "Otherwise it will be performed slice-wise.";

struct ArtifactChoice : ::testing::Test {
  ArtifactChoice() { pretendInput(converter, 2, 1000, 100); }
  ScriptedHost host;
  PluginConverter converter;
};

TEST_F(ArtifactChoice, IsTheOnlyDialogueOfThePluginWithTheVolumeWiseQuestion) {
  host.integerAnswers = {1};
  host.yesNoAnswers = {1};
  EXPECT_TRUE(converter.askParameters());
  EXPECT_EQ(host.calls, (Lines{"log " + line("Defining parameters"), choiceQuestion, volumeWiseQuestion}));
}

TEST_F(ArtifactChoice, OneSwitchesTheGradientCorrectionOn) {
  host.integerAnswers = {1};
  host.yesNoAnswers = {0};
  EXPECT_TRUE(converter.askParameters());
  EXPECT_TRUE(converter.switches.correctGradient);
  EXPECT_FALSE(converter.switches.correctBCG);
  EXPECT_EQ(converter.switches.volumeWise, 0);
  EXPECT_TRUE(converter.switches.anyArtifactCorrection);
  EXPECT_TRUE(converter.switches.correctionNeeded);
  EXPECT_TRUE(converter.switches.processingNeeded);
  EXPECT_FALSE(converter.switches.filteringNeeded);
  EXPECT_FALSE(converter.switches.scalingNeeded);
  EXPECT_FALSE(converter.switches.rewriteNeeded);
}

TEST_F(ArtifactChoice, TwoSwitchesBothCorrectionsOn) {
  host.integerAnswers = {2};
  host.yesNoAnswers = {1};
  EXPECT_TRUE(converter.askParameters());
  EXPECT_TRUE(converter.switches.correctGradient);
  EXPECT_TRUE(converter.switches.correctBCG);
  EXPECT_EQ(converter.switches.volumeWise, 1);
}

TEST_F(ArtifactChoice, ACancelledVolumeWiseQuestionGoesOnAsVolumeWise) {
  host.integerAnswers = {1};
  host.yesNoAnswers = {-1};
  EXPECT_TRUE(converter.askParameters());
  EXPECT_EQ(converter.switches.volumeWise, -1);
  EXPECT_FALSE(host.logged(line("Plugin execution was aborted.")));
}

TEST_F(ArtifactChoice, CancelledLogsThatAndThenThatNoProcessingIsRequired) {
  host.integerAnswers = {-1};
  EXPECT_FALSE(converter.askParameters());
  EXPECT_EQ(host.calls, (Lines{"log " + line("Defining parameters"), choiceQuestion,
                               "log // EMEG artifacts > No choice made. Exiting plugin.",
                               "log " + line("No processing is required: exiting plugin.")}));
  EXPECT_FALSE(converter.options.correctArtifacts);
}

TEST_F(ArtifactChoice, TheLineAboutNoChoiceCarriesItsOwnPrefix) {
  LMTRPluginEMEGFileConverter other("// other > ", true);
  host.integerAnswers = {-1};
  EXPECT_TRUE(other.askArtifactCorrection());
  EXPECT_EQ(host.logLines(), Lines{"// EMEG artifacts > No choice made. Exiting plugin."});
}

TEST_F(ArtifactChoice, ZeroSetsNoSwitchAndLogsNoChoiceLine) {
  host.integerAnswers = {0};
  EXPECT_FALSE(converter.askParameters());
  EXPECT_EQ(host.calls, (Lines{"log " + line("Defining parameters"), choiceQuestion,
                               "log " + line("No processing is required: exiting plugin.")}));
  EXPECT_TRUE(converter.options.correctArtifacts);
}

TEST_F(ArtifactChoice, AnyOtherAnswerAsksNothingMore) {
  host.integerAnswers = {3};
  EXPECT_TRUE(converter.askArtifactCorrection());
  EXPECT_EQ(host.calls, Lines{choiceQuestion});
  EXPECT_FALSE(converter.switches.correctGradient);
}

TEST_F(ArtifactChoice, IsAskedWithoutEffectWhereTheCorrectionIsNotOffered) {
  converter.options.correctArtifacts = false;
  host.integerAnswers = {2};
  EXPECT_TRUE(converter.askArtifactCorrection());
  EXPECT_EQ(host.calls, Lines{choiceQuestion});
  EXPECT_FALSE(converter.switches.correctGradient);
  EXPECT_FALSE(converter.switches.correctBCG);
}

TEST_F(ArtifactChoice, ClearsAllFourSwitchesFirst) {
  StageSwitches& switches = converter.switches;
  switches.correctSaturations = switches.correctGradient = switches.correctBCG = switches.correctOcular =
      true;
  host.integerAnswers = {0};
  EXPECT_TRUE(converter.askArtifactCorrection());
  EXPECT_FALSE(switches.correctSaturations || switches.correctGradient || switches.correctBCG ||
               switches.correctOcular);
}

TEST_F(ArtifactChoice, BelowTenHertzEndsInAMessageBoxThatNamesTheRate) {
  PluginConverter slow;
  pretendInput(slow, 2, 1000, 9.5);
  host.integerAnswers = {1};
  host.yesNoAnswers = {1};
  EXPECT_FALSE(slow.askParameters());
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_NE(host.boxes()[0].find("9.5"), std::string::npos);
}

TEST_F(ArtifactChoice, AtTenHertzGoesOn) {
  PluginConverter slow;
  pretendInput(slow, 2, 1000, 10);
  host.integerAnswers = {1};
  host.yesNoAnswers = {1};
  EXPECT_TRUE(slow.askParameters());
}

TEST(ForcedHeaderUpdate, WritesTheRecordingsValuesIntoTheDescription) {
  ScriptedHost host;
  QuietConverter converter;
  pretendInput(converter, 2, 1000, 100);
  converter.options.forceHeaderUpdate = true;
  host.integerAnswers = {1};
  EXPECT_TRUE(converter.askParameters());
  const CcdHeader& header = converter.channels.channelDescription.header;
  EXPECT_EQ(header.samplingFrequency(), 100.0);
  EXPECT_EQ(header.intervalLengthMs(), 10000.0);
  EXPECT_EQ(header.nrOfTimePoints(), 1000);
  EXPECT_TRUE(converter.switches.processingNeeded);
  EXPECT_TRUE(converter.switches.rewriteNeeded);
  EXPECT_FALSE(converter.switches.correctionNeeded);
}

} // namespace
} // namespace emeg
