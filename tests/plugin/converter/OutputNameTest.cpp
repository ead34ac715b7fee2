#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

/// A converter of which only the naming is used.
struct OutputName : ::testing::Test {
  OutputName() { pretendInput(converter, 4, 1000, 100); }
  std::string suffix() {
    EXPECT_TRUE(converter.buildOutputName());
    return converter.values.outputSuffix;
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(OutputName, IsEmptyWithoutAnyOption) {
  converter.switches.correctGradient = true;
  converter.scalingOrder = 3;
  converter.filters.highPassCutOff = 1;
  EXPECT_EQ(suffix(), "");
}

TEST_F(OutputName, NamesTheGradientCorrectionOfThePlugin) {
  converter.options.correctArtifacts = true;
  converter.options.applyScaling = true;
  converter.switches.correctGradient = true;
  EXPECT_EQ(suffix(), "_GRA");
  converter.switches.correctBCG = true;
  EXPECT_EQ(suffix(), "_GRA_BCG");
  converter.switches.correctOcular = true;
  EXPECT_EQ(suffix(), "_GRA_BCG_OCU");
  EXPECT_EQ(converter.outputPathBuffer.withEnding(converter.values.outputSuffix + ".ctc"),
            "run1_GRA_BCG_OCU.ctc");
}

TEST_F(OutputName, CountsTheChannelsEvenWhenAllWereKept) {
  converter.options.selectChannels = true;
  converter.selection.nrOfSelectedChannels = 4;
  EXPECT_EQ(suffix(), "_4ch");
}

TEST_F(OutputName, CountsGradiometersAndMagnetometersForMEG) {
  converter.options.selectChannels = true;
  converter.options.isEEG = false;
  converter.selection.nrOfSelectedChannels = 9;
  converter.selection.nrOfSelectedGradiometers = 7;
  converter.selection.nrOfSelectedMagnetometers = 2;
  EXPECT_EQ(suffix(), "_7gr-2mg");
}

TEST_F(OutputName, RoundsTheIntervalToWholeMilliseconds) {
  converter.options.selectTimeInterval = true;
  converter.values.intervalStartMs = 0;
  converter.values.intervalEndMs = 999.6f;
  EXPECT_EQ(suffix(), "_0-1000ms");
}

TEST_F(OutputName, PutsTheHighPassBeforeTheLowPass) {
  converter.options.applyFilters = true;
  converter.filters.highPassCutOff = 0.6;
  converter.filters.lowPassCutOff = 70;
  converter.filters.nrOfNotches = 2;
  converter.filters.decimationFactor = 5;
  EXPECT_EQ(suffix(), "_HP1_LP70_NOTCH_dec5");
}

TEST_F(OutputName, LeavesOutFiltersThatAreOff) {
  converter.options.applyFilters = true;
  EXPECT_EQ(suffix(), "");
  converter.filters.lowPassCutOff = 30;
  EXPECT_EQ(suffix(), "_LP30");
}

TEST_F(OutputName, NamesAScalingOrderOfEitherSign) {
  converter.options.applyScaling = true;
  EXPECT_EQ(suffix(), "");
  converter.scalingOrder = 6;
  EXPECT_EQ(suffix(), "_sc6");
  converter.scalingOrder = -3;
  EXPECT_EQ(suffix(), "_sc-3");
}

TEST_F(OutputName, JoinsAllPiecesInTheirFixedOrder) {
  converter.options.selectChannels = true;
  converter.options.selectTimeInterval = true;
  converter.options.applyFilters = true;
  converter.options.applyScaling = true;
  converter.options.correctArtifacts = true;
  converter.selection.nrOfSelectedChannels = 3;
  converter.values.intervalStartMs = 100;
  converter.values.intervalEndMs = 2500;
  converter.filters.highPassCutOff = 1;
  converter.filters.lowPassCutOff = 40;
  converter.filters.nrOfNotches = 1;
  converter.filters.decimationFactor = 2;
  converter.scalingOrder = 6;
  converter.switches.correctGradient = true;
  EXPECT_EQ(suffix(), "_3ch_100-2500ms_HP1_LP40_NOTCH_dec2_sc6_GRA");
  EXPECT_EQ(suffix(), "_3ch_100-2500ms_HP1_LP40_NOTCH_dec2_sc6_GRA") << "a second call starts anew";
}

TEST_F(OutputName, ThatEqualsTheInputIsRefusedWithOneMessageBox) {
  converter.values.outputSuffix.clear();
  EXPECT_FALSE(converter.checkOutputPath());
  ASSERT_EQ(host.calls.size(), 1u);
  ASSERT_EQ(host.boxes().size(), 1u);
  EXPECT_NE(host.boxes()[0].find("run1.ctc"), std::string::npos);
}

TEST(OutputNameOfARun, ThatWouldReplaceTheInputEndsItBeforeAnyChunkFile) {
  const Recording recording = countingRecording(2, 100);
  ChosenRecording chosen(recording);
  QuietConverter converter;
  converter.options.forceHeaderUpdate = true; // processing without any suffix
  chosen.host.integerAnswers = {1};
  EXPECT_FALSE(converter.start());
  EXPECT_EQ(chosen.host.boxes().size(), 1u);
  EXPECT_EQ(chosen.folder.names(), std::vector<std::string>{"run1.ctc"});
  EXPECT_EQ(readFile(chosen.ctcPath()), recording.bytes());
  for (const std::string& call : chosen.host.calls)
    EXPECT_EQ(call.find("Creating chunk"), std::string::npos) << call;
}

} // namespace
} // namespace emeg
