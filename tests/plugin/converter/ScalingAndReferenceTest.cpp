#include "tests/plugin/converter/Converters.h"

#include "dsp/PowerOfTen.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

struct ScalingAndReference : ::testing::Test {
  ScalingAndReference() { pretendInput(converter, 4, 1000, 100); }
  ScriptedHost host;
  QuietConverter converter;
};

TEST(PowerOfTen, MultipliesAndDividesByWholePowers) {
  EXPECT_EQ(powerOfTen(0), 1.0);
  EXPECT_EQ(powerOfTen(1), 10.0);
  EXPECT_EQ(powerOfTen(6), 1e6);
  EXPECT_EQ(powerOfTen(10), 1e10);
  EXPECT_DOUBLE_EQ(powerOfTen(-1), 0.1);
  EXPECT_DOUBLE_EQ(powerOfTen(-9), 1e-9);
  EXPECT_DOUBLE_EQ(powerOfTen(300), 1e300);
  EXPECT_EQ(powerOfTen(std::numeric_limits<int32_t>::min()), 0.0);
}

TEST_F(ScalingAndReference, NeitherIsAskedByThePlugin) {
  PluginConverter plugin;
  pretendInput(plugin, 4, 1000, 100);
  plugin.scalingOrder = 0;
  EXPECT_TRUE(plugin.askScalingAndReference());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(plugin.scalingOrder, 0);
}

TEST_F(ScalingAndReference, TheScalingOrderComesFromDialogueParameterFive) {
  converter.options.applyScaling = true;
  converter.options.parametersFromDialog = true;
  host.dialogIntegers[5] = 6;
  host.integerAnswers = {0};
  EXPECT_TRUE(converter.askParameters());
  EXPECT_EQ(converter.scalingOrder, 6);
  EXPECT_TRUE(converter.switches.scalingNeeded);
  EXPECT_TRUE(converter.switches.processingNeeded);
  EXPECT_FALSE(converter.switches.correctionNeeded);
  for (const double scale : converter.channels.channelScale) EXPECT_EQ(scale, 1e6);
}

TEST_F(ScalingAndReference, TheScalingPromptComesWhenTheDialogueHoldsNone) {
  converter.options.applyScaling = true;
  converter.options.parametersFromDialog = true;
  host.integerAnswers = {3};
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_EQ(host.calls, (Lines{"parameter 5", "integer Please provide a scaling order (10^n) factor [0-10] \n"
                                              " (leave 0 for no scaling). [0, 0, 10]"}));
  EXPECT_EQ(converter.scalingOrder, 3);
}

TEST_F(ScalingAndReference, ACancelledScalingPromptAborts) {
  converter.options.applyScaling = true;
  converter.options.parametersFromDialog = true;
  host.integerAnswers = {-1};
  EXPECT_FALSE(converter.askScalingAndReference());
  EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
}

TEST_F(ScalingAndReference, AScalingOrderBeyondWhatANumberHoldsIsRefused) {
  converter.options.applyScaling = true;
  converter.options.parametersFromDialog = true;
  host.dialogIntegers[5] = 400;
  EXPECT_FALSE(converter.askScalingAndReference());
  EXPECT_EQ(host.calls,
            (Lines{"parameter 5", "box The scaling order 400 is too large: 10^308 is the largest factor."}));
}

TEST_F(ScalingAndReference, OnlySelectedChannelsAreScaledOffsetsIncluded) {
  converter.selection.selectedChannels = {1, 3};
  converter.channels.channelOffset = {1, 2, 3, 4};
  converter.scalingOrder = 3;
  converter.applyScalingOrder();
  EXPECT_EQ(converter.channels.channelScale, (std::vector<double>{1, 1000, 1, 1000}));
  EXPECT_EQ(converter.channels.channelOffset, (std::vector<double>{1, 2000, 3, 4000}));
}

TEST_F(ScalingAndReference, ANegativeOrderGivesTheReciprocal) {
  converter.selection.selectedChannels = {0};
  converter.scalingOrder = -2;
  converter.applyScalingOrder();
  EXPECT_DOUBLE_EQ(converter.channels.channelScale[0], 0.01);
  EXPECT_TRUE(converter.switches.scalingNeeded);
}

TEST_F(ScalingAndReference, TheReferenceIsAskedWithoutADialogueParameter) {
  converter.options.offerAverageReference = true;
  converter.selection.nrOfSelectedChannels = 4;
  host.yesNoAnswers = {1};
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_EQ(host.calls,
            (Lines{"parameter 6", "yesno Do you want to transform the data to the average reference?"}));
  EXPECT_TRUE(converter.switches.useAverageReference);
  EXPECT_EQ(converter.averageReferenceWeights, std::vector<double>(4, 0.25));
}

TEST_F(ScalingAndReference, TheReferenceComesFromDialogueParameterSixMinusOne) {
  converter.options.offerAverageReference = true;
  converter.selection.nrOfSelectedChannels = 4;
  host.dialogIntegers[6] = 1;
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_FALSE(converter.switches.useAverageReference);
  host.dialogIntegers[6] = 2;
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_TRUE(converter.switches.useAverageReference);
  EXPECT_TRUE(host.questions().empty());
}

TEST_F(ScalingAndReference, ZeroInTheDialogueAsksForTheReference) {
  converter.options.offerAverageReference = true;
  host.dialogIntegers[6] = 0;
  host.yesNoAnswers = {0};
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_EQ(host.questions().size(), 1u);
  EXPECT_FALSE(converter.switches.useAverageReference);
}

TEST_F(ScalingAndReference, ACancelledReferenceQuestionAborts) {
  converter.options.offerAverageReference = true;
  host.yesNoAnswers = {-1};
  EXPECT_FALSE(converter.askScalingAndReference());
  EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
}

TEST_F(ScalingAndReference, TheReferenceIsNotOfferedForMEG) {
  converter.options.offerAverageReference = true;
  converter.options.isEEG = false;
  EXPECT_TRUE(converter.askScalingAndReference());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_FALSE(converter.switches.useAverageReference);
}

TEST_F(ScalingAndReference, TheReferenceAloneIsACorrection) {
  converter.options.offerAverageReference = true;
  host.integerAnswers = {0};
  host.dialogIntegers[6] = 2;
  EXPECT_TRUE(converter.askParameters());
  EXPECT_TRUE(converter.switches.correctionNeeded);
  EXPECT_FALSE(converter.switches.anyArtifactCorrection);
}

} // namespace
} // namespace emeg
