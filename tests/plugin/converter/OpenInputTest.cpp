#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

const std::string ccdDialogue = "file Please select a CCD file...|*.ccd|CCD files (*.ccd)";
const std::string prtDialogue = "file Please select a PRT file...|*.prt|PRT files (*.prt)";
const std::string ctcDialogue = "file Please select a CTC file...|*.ctc|CTC files (*.ctc)";

std::string ccdBytes(const std::string& ctcName, const std::string& prtName, int nrOfRecords) {
  ChannelDescription description;
  description.header.setCtcFileName(ctcName);
  description.header.setPrtFileName(prtName);
  description.header.setNrOfChannels(nrOfRecords);
  for (int c = 0; c < nrOfRecords; ++c)
    description.channelRecords.push_back(
        CcdChannelRecord::make("Electrode" + std::to_string(c + 1), 7, 100.0));
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  return {bytes.begin(), bytes.end()};
}

/// A folder with a recording of three channels, and a host.
struct OpenInput : ::testing::Test {
  OpenInput() { writeFile(path("run1.ctc"), countingRecording(3, 50).bytes()); }
  std::string path(const std::string& name) const { return folder.path(name); }
  bool openCcd(const std::string& ccdPath) {
    host.fileAnswers = {ccdPath};
    return converter.openInput();
  }
  bool openWithPrt(const std::string& prtPath) {
    host.fileAnswers = {"", prtPath, path("run1.ctc")};
    return converter.openInput();
  }
  TestFolder folder;
  ScriptedHost host;
  QuietConverter converter;
};

TEST_F(OpenInput, ShowsThreeDialoguesAndRepaintsAfterTheOneThatChoseAFile) {
  host.fileAnswers = {"", "", path("run1.ctc")};
  EXPECT_TRUE(converter.openInput());
  EXPECT_EQ(host.calls, (Lines{ccdDialogue, prtDialogue, ctcDialogue, "update"}));
  EXPECT_EQ(converter.inputPathBuffer.path(), path("run1.ctc"));
  EXPECT_EQ(converter.outputPathBuffer.path(), path("run1.ctc"));
  EXPECT_FALSE(converter.protocolList.prtPresent);
}

TEST_F(OpenInput, RepaintsOnceAfterEachChosenFile) {
  writeFile(path("run1.prt"), protocolText("usec", {}));
  EXPECT_TRUE(openWithPrt(path("run1.prt")));
  EXPECT_EQ(host.calls, (Lines{ccdDialogue, prtDialogue, "update", ctcDialogue, "update"}));
  EXPECT_TRUE(converter.protocolList.prtPresent);
}

TEST_F(OpenInput, ShowsOnlyTheFirstDialogueWhenACcdIsChosen) {
  writeFile(path("run1.ccd"), ccdBytes("run1.ctc", "", 3));
  EXPECT_TRUE(openCcd(path("run1.ccd")));
  EXPECT_EQ(host.calls, (Lines{ccdDialogue, "update"}));
  EXPECT_EQ(converter.inputPathBuffer.path(), path("run1.ctc"));
  EXPECT_EQ(converter.channels.channelDescription.channelRecords[2].name(), "Electrode3");
  EXPECT_TRUE(converter.channels.channelDescription.channelRecords[2].good());
}

TEST_F(OpenInput, WithoutACtcEndsInAMessageBox) {
  EXPECT_FALSE(converter.openInput());
  EXPECT_EQ(host.calls,
            (Lines{ccdDialogue, prtDialogue, ctcDialogue, "box This plugin requires a CTC file."}));
}

TEST_F(OpenInput, LooksBesideTheCcdForTheNamesThatItRecords) {
  std::filesystem::create_directory(path("moved"));
  writeFile(path("moved/other.ctc"), countingRecording(2, 20).bytes());
  writeFile(path("moved/stimuli.prt"), protocolText("usec", {"A\r\n1\r\n10 20\r\n1 2 3"}));
  writeFile(path("moved/run1.ccd"), ccdBytes("other.ctc", "stimuli.prt", 2));
  EXPECT_TRUE(openCcd(path("moved/run1.ccd")));
  EXPECT_EQ(converter.inputPathBuffer.path(), path("moved/other.ctc"));
  EXPECT_EQ(converter.input.nrOfTimePoints, 20);
  EXPECT_TRUE(converter.protocolList.prtPresent);
  ASSERT_EQ(converter.protocolList.protocols.size(), 1u);
  EXPECT_EQ(converter.protocolList.protocols[0].conditions[1].conditionName, "A");
}

TEST_F(OpenInput, TakesABackslashForASeparatorToo) {
  writeFile(path("sub\\run1.ccd"), ccdBytes("run2.ctc", "", 2));
  writeFile(path("sub\\run2.ctc"), countingRecording(2, 20).bytes());
  EXPECT_TRUE(openCcd(path("sub\\run1.ccd")));
  EXPECT_EQ(converter.inputPathBuffer.path(), path("sub\\run2.ctc"));
}

TEST_F(OpenInput, ACcdWithoutPrtNameStillSetsPrtPresent) {
  writeFile(path("run1.ccd"), ccdBytes("run1.ctc", "", 3));
  EXPECT_TRUE(openCcd(path("run1.ccd")));
  EXPECT_TRUE(converter.protocolList.prtPresent);
  EXPECT_TRUE(converter.protocolList.protocols.empty());
  EXPECT_TRUE(host.boxes().empty());
}

TEST_F(OpenInput, OpensPathsOfAnyLength) {
  std::string deep = folder.path();
  for (int level = 0; level < 6; ++level) deep += "/" + std::string(100, static_cast<char>('a' + level));
  std::filesystem::create_directories(deep);
  writeFile(deep + "/run1.ctc", countingRecording(2, 20).bytes());
  writeFile(deep + "/run1.ccd", ccdBytes("run1.ctc", "", 2));
  EXPECT_TRUE(openCcd(deep + "/run1.ccd"));
  EXPECT_EQ(converter.inputPathBuffer.path(), deep + "/run1.ctc");
}

TEST_F(OpenInput, ReadsTheHeaderFields) {
  writeFile(path("run1.ctc"), ctcBytes(3, 2, 5, 77, 512.5f, std::string(770, '\0')));
  host.fileAnswers = {"", "", path("run1.ctc")};
  EXPECT_TRUE(converter.openInput());
  EXPECT_EQ(converter.channels.nrOfChannels, 5);
  EXPECT_EQ(converter.channels.nrOfEEGChannels, 5);
  EXPECT_EQ(converter.channels.nrOfStimulationChannels, 0);
  EXPECT_EQ(converter.input.nrOfTimePoints, 77);
  EXPECT_EQ(converter.input.dataOffset, 32);
  EXPECT_EQ(converter.input.fileSize, 802);
  EXPECT_EQ(converter.values.samplingFrequency, 512.5);
  EXPECT_EQ(converter.values.samplingInterval, 1 / 512.5);
  EXPECT_EQ(converter.channels.channelScale, std::vector<double>(5, 1.0));
  EXPECT_EQ(converter.channels.channelOffset, std::vector<double>(5, 0.0));
}

TEST_F(OpenInput, MapsTheReadableTypesToItsOwnSampleCodes) {
  for (const auto& [type, format] : {std::pair<int32_t, SampleFormat>{1, SampleFormat::Float32},
                                     {2, SampleFormat::Float64},
                                     {3, SampleFormat::Int16}}) {
    QuietConverter other;
    writeFile(path("run1.ctc"), ctcBytes(type, 2, 1, 4, 100, std::string(32, '\0')));
    host.fileAnswers = {"", "", path("run1.ctc")};
    EXPECT_TRUE(other.openInput()) << type;
    EXPECT_EQ(other.input.inputSampleFormat, format) << type;
  }
}

TEST_F(OpenInput, EveryOrganisationButOneIsMultiplexed) {
  for (const int32_t organisation : {0, 1, 2, 3, -1}) {
    QuietConverter other;
    writeFile(path("run1.ctc"), ctcBytes(1, organisation, 2, 10, 100, std::string(80, '\0')));
    host.fileAnswers = {"", "", path("run1.ctc")};
    EXPECT_TRUE(other.openInput()) << organisation;
    EXPECT_EQ(other.input.multiplexedInput, organisation != 1) << organisation;
    if (organisation == 1) {
      EXPECT_EQ(other.input.channelDataOffsets, (std::vector<int64_t>{32, 32 + 40}));
    }
  }
}

TEST_F(OpenInput, TheFirstEightBytesMayHoldAnything) {
  std::string bytes = countingRecording(2, 10).bytes();
  bytes.replace(0, 8, std::string(8, '\xff'));
  writeFile(path("run1.ctc"), bytes);
  host.fileAnswers = {"", "", path("run1.ctc")};
  EXPECT_TRUE(converter.openInput());
  EXPECT_EQ(converter.input.nrOfTimePoints, 10);
}

TEST_F(OpenInput, WithoutACcdBuildsADefaultDescriptionOfBadChannels) {
  host.fileAnswers = {"", "", path("run1.ctc")};
  EXPECT_TRUE(converter.openInput());
  const ChannelDescription& description = converter.channels.channelDescription;
  std::array<unsigned char, ccdHeaderSize> expected{};
  expected[513] = 3; // the channel count, and nothing else
  EXPECT_EQ(description.header.bytes, expected);
  EXPECT_TRUE(description.extraRecords.empty());
  ASSERT_EQ(description.channelRecords.size(), 3u);
  for (size_t c = 0; c < 3; ++c) {
    CcdChannelRecord record = CcdChannelRecord::make("Channel_00" + std::to_string(c), 0, 100.0);
    record.setGood(false);
    EXPECT_EQ(description.channelRecords[c].bytes, record.bytes) << c;
  }
}

TEST_F(OpenInput, AChannelThatTheCcdDoesNotDescribeGetsTheDefaultRecord) {
  writeFile(path("run1.ccd"), ccdBytes("run1.ctc", "", 1));
  EXPECT_TRUE(openCcd(path("run1.ccd")));
  const ChannelDescription& description = converter.channels.channelDescription;
  ASSERT_EQ(description.channelRecords.size(), 3u);
  EXPECT_EQ(description.channelRecords[0].name(), "Electrode1");
  EXPECT_EQ(description.channelRecords[1].name(), "Channel_001");
  EXPECT_EQ(description.channelRecords[2].name(), "Channel_002");
  EXPECT_FALSE(description.channelRecords[2].good());
}

TEST_F(OpenInput, SurplusRecordsOfTheCcdStay) {
  writeFile(path("run1.ccd"), ccdBytes("run1.ctc", "", 5));
  EXPECT_TRUE(openCcd(path("run1.ccd")));
  EXPECT_EQ(converter.channels.nrOfChannels, 3);
  EXPECT_EQ(converter.channels.channelDescription.channelRecords.size(), 5u);
  EXPECT_EQ(converter.channels.channelDescription.header.nrOfChannels(), 5);
}

TEST_F(OpenInput, LoadsTheProtocolAndTheTriggersOfAnEarlierRun) {
  writeFile(path("stim.v2.prt"), protocolText("usec", {"A\r\n1\r\n10 20\r\n1 2 3"}));
  writeFile(path("stim.v2_ArtifactsTriggers.prt"),
            protocolText("usec", {"MRGradientTriggers\r\n2\r\n5 5\r\n7 7\r\n64 64 255"}));
  EXPECT_TRUE(openWithPrt(path("stim.v2.prt")));
  const std::vector<Protocol>& protocols = converter.protocolList.protocols;
  ASSERT_EQ(protocols.size(), 2u);
  EXPECT_EQ(protocols[0].name, "");
  EXPECT_EQ(protocols[1].name, "_ArtifactsTriggers");
  EXPECT_EQ(protocols[1].conditions[1].nrOfIntervals(), 2);
}

TEST_F(OpenInput, LoadsTheTriggersEvenWithoutAMainProtocol) {
  writeFile(path("stim_ArtifactsTriggers.prt"), protocolText("usec", {}));
  EXPECT_TRUE(openWithPrt(path("stim.prt")));
  ASSERT_EQ(converter.protocolList.protocols.size(), 1u);
  EXPECT_EQ(converter.protocolList.protocols[0].name, "_ArtifactsTriggers");
  EXPECT_TRUE(host.boxes().empty());
}

TEST_F(OpenInput, APrtPathWithoutADotIsNotCut) {
  writeFile(path("stim.prt"), protocolText("usec", {}));
  EXPECT_TRUE(openWithPrt(path("stim")));
  EXPECT_EQ(converter.protocolList.protocols.size(), 1u);
}

TEST_F(OpenInput, ADotInAFolderNameIsNoCutPoint) {
  std::filesystem::create_directory(path("day.1"));
  writeFile(path("day.1/stim.prt"), protocolText("usec", {}));
  EXPECT_TRUE(openWithPrt(path("day.1/stim")));
  EXPECT_EQ(converter.protocolList.protocols.size(), 1u);
}

TEST_F(OpenInput, AProtocolThatMissesAKeywordIsSkippedSilently) {
  for (const char* text : {"", "ResolutionOfTime: usec", "NrOfConditions: 1\r\nA\r\n0\r\n1 2 3"}) {
    QuietConverter other;
    writeFile(path("stim.prt"), text);
    host.fileAnswers = {"", path("stim.prt"), path("run1.ctc")};
    EXPECT_TRUE(other.openInput()) << text;
    EXPECT_TRUE(other.protocolList.protocols.empty()) << text;
  }
  EXPECT_TRUE(host.boxes().empty());
}

TEST_F(OpenInput, TimesOfMillisecondProtocolsBecomeMicroseconds) {
  writeFile(path("stim.prt"), protocolText("msec", {"A\r\n1\r\n123 456\r\n1 2 3"}));
  EXPECT_TRUE(openWithPrt(path("stim.prt")));
  const Condition& condition = converter.protocolList.protocols[0].conditions[1];
  EXPECT_DOUBLE_EQ(condition.onsets[0], 123000.0);
  EXPECT_DOUBLE_EQ(condition.offsets[0], 456000.0);
}

TEST_F(OpenInput, TimesOfVolumeProtocolsBecomeMicrosecondsWithTheRecordingsRate) {
  writeFile(path("stim.prt"), protocolText("Volumes", {"A\r\n1\r\n10 25\r\n1 2 3"}));
  EXPECT_TRUE(openWithPrt(path("stim.prt")));
  const Condition& condition = converter.protocolList.protocols[0].conditions[1];
  EXPECT_DOUBLE_EQ(condition.onsets[0], 100000.0); // 10 samples at 100 Hz
  EXPECT_DOUBLE_EQ(condition.offsets[0], 250000.0);
}

} // namespace
} // namespace emeg
