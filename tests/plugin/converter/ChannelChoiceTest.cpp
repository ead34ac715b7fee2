#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;
using Numbers = std::vector<int32_t>;

struct ChannelChoice : ::testing::Test {
  ChannelChoice() {
    pretendInput(converter, 6, 1000, 100);
    converter.options.selectChannels = true;
  }
  /// Channels 0, 2, 4 are gradiometers, 1 and 5 magnetometers, 3 is a stimulation channel.
  void useMEG() {
    converter.options.isEEG = false;
    ChannelTable& channels = converter.channels;
    channels.nrOfEEGChannels = 0;
    channels.nrOfStimulationChannels = 1;
    channels.nrOfGradiometers = 3;
    channels.nrOfMagnetometers = 2;
    channels.gradiometerChannelIndices = {0, 2, 4};
    channels.magnetometerChannelIndices = {1, 5};
  }
  bool build(int32_t code) {
    converter.selection.channelChoice = code;
    return converter.buildChannelLists();
  }
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(ChannelChoice, OfEEGShowsTheSummaryAndTheMenu) {
  ChannelTable& channels = converter.channels;
  channels.nrOfChannels = 46;
  channels.nrOfStimulationChannels = 1;
  channels.nrOfGradiometers = 2;
  channels.nrOfMagnetometers = 3;
  channels.nrOfEEGChannels = 10;
  channels.nrOfEOGChannels = 4;
  channels.nrOfEMGChannels = 5;
  channels.nrOfECGChannels = 6;
  channels.nrOfRespirationChannels = 7;
  channels.nrOfOtherChannels = 8;
  host.integerAnswers = {2};
  EXPECT_TRUE(converter.askChannelChoice());
  const std::string gap20(20, ' ');
  const std::string gap24(24, ' ');
  EXPECT_EQ(host.calls,
            (Lines{"parameter 1",
                   "integer Total number of channels: 46.<br>" + gap20 + "- 1 stimulation channels;<br>" +
                       gap20 + "- 2 MEG gradiometer channels;<br>" + gap20 +
                       "- 3 MEG magnetometer channels;<br>" + gap20 + "- 10 EEG channels;<br><br>" + gap20 +
                       "- 4 EOG, 5 EMG, 6 ECG and 7 respiration channels;<br>" + gap20 +
                       "- 8 other channels.<br><br>Would you like to export:<br>" + gap24 +
                       "- 1: all EEG channels?<br>" + gap24 +
                       "- 2: a custom selection of EEG channels? [1, 1, 2]"}));
  EXPECT_EQ(converter.selection.channelChoice, 2);
}

TEST_F(ChannelChoice, OfMEGShowsItsOwnMenu) {
  useMEG();
  host.integerAnswers = {5};
  EXPECT_TRUE(converter.askChannelChoice());
  const std::string gap20(20, ' ');
  const std::string gap24(24, ' ');
  EXPECT_EQ(host.calls[1], "integer Total number of channels: 6.<br>" + gap20 +
                               "- 1 stimulation channels;<br>" + gap20 + "- 3 MEG gradiometer channels;<br>" +
                               gap20 + "- 2 MEG magnetometer channels;<br>" + gap20 +
                               "- 0 EEG channels;<br><br>" + gap20 +
                               "- 0 EOG, 0 EMG, 0 ECG and 0 respiration channels;<br>" + gap20 +
                               "- 0 other channels.<br><br>Would you like to export:<br>" + gap24 +
                               "- 1: all gradiometer channels?<br>" + gap24 +
                               "- 2: a custom selection of gradiometer channels?<br>" + gap24 +
                               "- 3: all magnetometer channels?<br>" + gap24 +
                               "- 4: a custom selection of magnetometer channels?<br>" + gap24 +
                               "- 5: all gradiometer and magnetometer channels? [1, 1, 5]");
}

TEST_F(ChannelChoice, FromTheHostsDialogueAsksNothing) {
  host.dialogIntegers[1] = 4;
  EXPECT_TRUE(converter.askChannelChoice());
  EXPECT_EQ(host.calls, Lines{"parameter 1"});
  EXPECT_EQ(converter.selection.channelChoice, 4);
}

TEST_F(ChannelChoice, OfZeroInTheHostsDialogueAsksTheUser) {
  host.dialogIntegers[1] = 0;
  host.integerAnswers = {1};
  EXPECT_TRUE(converter.askChannelChoice());
  EXPECT_EQ(host.questions().size(), 1u);
  EXPECT_EQ(converter.selection.channelChoice, 1);
}

TEST_F(ChannelChoice, CancelledAborts) {
  for (const int answer : {0, -1}) {
    host.calls.clear();
    host.integerAnswers = {answer};
    EXPECT_FALSE(converter.askChannelChoice());
    EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
  }
}

TEST_F(ChannelChoice, IsNotAskedWhereAllChannelsAreProcessed) {
  converter.options.selectChannels = false;
  EXPECT_TRUE(converter.askChannelChoice());
  EXPECT_TRUE(converter.buildChannelLists());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(converter.selection.nrOfSelectedChannels, 6);
  EXPECT_FALSE(converter.selection.channelSubset);
}

TEST_F(ChannelChoice, OneAndTwoAreAllEEGChannels) {
  converter.channels.nrOfEEGChannels = 4;
  for (const int32_t code : {1, 2}) {
    EXPECT_TRUE(build(code)) << code;
    EXPECT_EQ(converter.selection.selectedChannels, (Numbers{0, 1, 2, 3})) << code;
    EXPECT_TRUE(converter.selection.channelSubset) << code;
  }
  EXPECT_TRUE(host.calls.empty());
}

TEST_F(ChannelChoice, OtherEEGCodesFindNoChannels) {
  for (const int32_t code : {3, 5, 7, 8, 100}) {
    host.calls.clear();
    EXPECT_FALSE(build(code)) << code;
    EXPECT_EQ(host.calls, Lines{"box No channels found!"}) << code;
  }
}

TEST_F(ChannelChoice, OneAndThreeAreAllGradiometers) {
  useMEG();
  for (const int32_t code : {1, 3}) {
    EXPECT_TRUE(build(code)) << code;
    EXPECT_EQ(converter.selection.selectedChannels, (Numbers{0, 2, 4})) << code;
    EXPECT_EQ(converter.selection.selectedGradiometers, (Numbers{0, 1, 2})) << code;
    EXPECT_EQ(converter.selection.nrOfSelectedGradiometers, 3) << code;
    EXPECT_EQ(converter.selection.nrOfSelectedMagnetometers, 0) << code;
  }
}

TEST_F(ChannelChoice, FiveIsAllMagnetometers) {
  useMEG();
  EXPECT_TRUE(build(5));
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{1, 5}));
  EXPECT_EQ(converter.selection.nrOfSelectedGradiometers, 0);
  EXPECT_EQ(converter.selection.nrOfSelectedMagnetometers, 2);
}

TEST_F(ChannelChoice, EightIsGradiometersFollowedByMagnetometers) {
  useMEG();
  EXPECT_TRUE(build(8));
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{0, 2, 4, 1, 5}));
  EXPECT_EQ(converter.selection.nrOfSelectedChannels, 5);
  EXPECT_TRUE(converter.selection.channelSubset);
}

TEST_F(ChannelChoice, OtherMEGCodesFindNoChannels) {
  useMEG();
  for (const int32_t code : {2, 6, 9}) {
    host.calls.clear();
    EXPECT_FALSE(build(code)) << code;
    EXPECT_EQ(host.calls, Lines{"box No channels found!"}) << code;
  }
}

TEST_F(ChannelChoice, FourAsksForEEGChannelsOneByOne) {
  host.integerAnswers = {2, 3, 6};
  EXPECT_TRUE(build(4));
  EXPECT_EQ(host.calls,
            (Lines{"integer Please indicate the number of EEG channels to select [1 - 6]. [1, 1, 6]",
                   "integer Please indicate channel #1/2.<br>"
                   "Channel number should stay within the interval [1 - 6]. [1, 1, 6]",
                   "integer Please indicate channel #2/2.<br>"
                   "Channel number should stay within the interval [1 - 6]. [4, 1, 6]"}));
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{2, 5}));
  EXPECT_TRUE(converter.selection.channelSubset);
}

TEST_F(ChannelChoice, FourMapsGradiometerPositionsToChannelNumbers) {
  useMEG();
  host.integerAnswers = {2, 3, 1};
  EXPECT_TRUE(build(4));
  EXPECT_EQ(host.calls[0],
            "integer Please indicate the number of gradiometer channels to select [1 - 3]. [1, 1, 3]");
  EXPECT_EQ(converter.selection.selectedGradiometers, (Numbers{2, 0}));
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{4, 0}));
  EXPECT_EQ(converter.selection.nrOfSelectedGradiometers, 2);
}

TEST_F(ChannelChoice, SevenAsksForMagnetometers) {
  useMEG();
  converter.channels.channelDescription.channelRecords[5].setGood(false);
  host.integerAnswers = {1, 2};
  host.yesNoAnswers = {0};
  EXPECT_TRUE(build(7));
  EXPECT_EQ(host.calls[0],
            "integer Please indicate the number of magnetometer channels to select [1 - 2]. [1, 1, 2]");
  EXPECT_EQ(host.calls[2], "yesno The channel 2 was marked as bad in the CCD file.<br>"
                           "Do you want to discard it?");
  EXPECT_EQ(converter.selection.selectedMagnetometers, (Numbers{1}));
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{5}));
}

TEST_F(ChannelChoice, ADiscardedBadChannelIsAskedAgainAndAKeptOneStays) {
  converter.channels.channelDescription.channelRecords[1].setGood(false);
  host.integerAnswers = {2, 2, 3, 2};
  host.yesNoAnswers = {1, 0};
  EXPECT_TRUE(build(4));
  const std::string bad = "yesno The channel 2 was marked as bad in the CCD file.<br>"
                          "Do you want to discard it?";
  const std::string first = "integer Please indicate channel #1/2.<br>"
                            "Channel number should stay within the interval [1 - 6]. [1, 1, 6]";
  ASSERT_EQ(host.calls.size(), 6u);
  EXPECT_EQ(host.calls[1], first);
  EXPECT_EQ(host.calls[2], bad);
  EXPECT_EQ(host.calls[3], first) << "position 1 again, with the default unchanged";
  EXPECT_EQ(host.calls[5], bad);
  EXPECT_EQ(converter.selection.selectedChannels, (Numbers{2, 1}));
}

TEST_F(ChannelChoice, ACancelledNumberOfChannelsOrChannelAborts) {
  for (const std::deque<int>& answers :
       {std::deque<int>{0}, std::deque<int>{-1}, std::deque<int>{2, 1, 0}, std::deque<int>{2, -1}}) {
    host.calls.clear();
    host.integerAnswers = answers;
    EXPECT_FALSE(build(4));
    EXPECT_EQ(host.logLines(), (Lines{"", line("Plugin execution was aborted.")}));
  }
}

TEST_F(ChannelChoice, AnswersBeyondTheBoundsNeverReachTheChannelTable) {
  for (const std::deque<int>& answers : {std::deque<int>{7}, std::deque<int>{1, 7}}) {
    host.calls.clear();
    host.integerAnswers = answers;
    EXPECT_FALSE(build(4));
    EXPECT_TRUE(host.logged(line("Plugin execution was aborted.")));
  }
}

TEST_F(ChannelChoice, OfARecordingWithoutChannelsFindsNone) {
  for (const int count : {0, -5}) {
    QuietConverter empty;
    pretendInput(empty, 0, 1000, 100);
    empty.channels.nrOfChannels = count;
    empty.channels.nrOfEEGChannels = count;
    host.calls.clear();
    EXPECT_FALSE(empty.askParameters());
    EXPECT_EQ(host.calls, (Lines{"log " + line("Defining parameters"), "box No channels found!"}));
  }
}

} // namespace
} // namespace emeg
