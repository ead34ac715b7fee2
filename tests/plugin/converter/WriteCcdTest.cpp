#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

struct WriteCcd : ::testing::Test {
  WriteCcd() {
    pretendInput(converter, 4, 1000, 100);
    converter.outputPathBuffer = PathBuffer(folder.path("run1.ctc"));
    converter.values.outputSuffix = "_x";
    converter.values.intervalStartMs = 100;
    converter.values.intervalEndMs = 2500.5f;
    converter.selection.nrOfSelectedChannels = 2;
    converter.span.nrOfOutputTimePoints = 321;
    converter.switches.processingNeeded = true;
    CcdHeader& header = converter.channels.channelDescription.header;
    header.bytes.fill(0xAB);
    header.bytes[575] = 2;
    for (size_t i = 576; i < 584; ++i) header.bytes[i] = 0;
    header.setCtcFileName("run1_x.ctc");
    header.setPrtFileName("");
    header.setNrOfChannels(4);
    converter.channels.channelDescription.extraRecords.resize(2);
    converter.channels.channelDescription.extraRecords[1].fill(0x5C);
    before = header;
  }
  std::string written() {
    EXPECT_TRUE(converter.writeCcd());
    return readFile(folder.path("run1_x.ccd"));
  }
  CcdHeader headerOf(const std::string& bytes) const {
    CcdHeader header;
    std::memcpy(header.bytes.data(), bytes.data(), ccdHeaderSize);
    return header;
  }
  bool processed(const std::string& bytes, size_t record) const {
    return bytes[584 + 420 * record + 33] != 0;
  }
  TestFolder folder;
  ScriptedHost host;
  QuietConverter converter;
  CcdHeader before;
};

TEST_F(WriteCcd, LeavesEverythingAsReadWhenNothingOfItChanged) {
  const std::string bytes = written();
  EXPECT_EQ(host.calls, Lines{"log " + line("Writing CCD")});
  ASSERT_EQ(bytes.size(), 584u + 4 * 420 + 2 * 48);
  EXPECT_EQ(headerOf(bytes).bytes, before.bytes);
  for (size_t c = 0; c < 4; ++c) EXPECT_FALSE(processed(bytes, c));
  EXPECT_EQ(bytes.substr(584 + 4 * 420), std::string(48, '\0') + std::string(48, '\x5C'));
}

TEST_F(WriteCcd, ASubsetMarksTheFirstRecordsAndCountsChannels) {
  converter.selection.channelSubset = true;
  converter.selection.selectedChannels = {3, 2};
  const std::string bytes = written();
  const CcdHeader header = headerOf(bytes);
  EXPECT_EQ(header.nrOfSelectedChannels(), 2);
  EXPECT_EQ(header.nrOfChannels(), 4);
  EXPECT_TRUE(processed(bytes, 0) && processed(bytes, 1));
  EXPECT_FALSE(processed(bytes, 2) || processed(bytes, 3));
  EXPECT_EQ(header.nrOfTimePoints(), before.nrOfTimePoints()) << "a subset alone does not count";
  EXPECT_EQ(header.decimationFactor(), before.decimationFactor());
}

TEST_F(WriteCcd, ARestrictedIntervalIsDescribed) {
  converter.switches.intervalRestricted = true;
  const CcdHeader header = headerOf(written());
  EXPECT_EQ(header.intervalStartMs(), 100.0);
  EXPECT_EQ(header.intervalEndMs(), 2500.5);
  EXPECT_EQ(header.intervalLengthMs(), 2400.5);
  EXPECT_EQ(header.nrOfTimePoints(), 321);
  EXPECT_TRUE(header.flag(CcdHeader::Flag::IntervalSelected));
  EXPECT_EQ(header.decimationFactor(), before.decimationFactor());
  EXPECT_EQ(header.nrOfSelectedChannels(), before.nrOfSelectedChannels());
}

TEST_F(WriteCcd, TheIntervalsLengthIsComputedInThirtyTwoBits) {
  converter.switches.intervalRestricted = true;
  converter.values.intervalStartMs = 0.1f;
  converter.values.intervalEndMs = 16777216.0f;
  const CcdHeader header = headerOf(written());
  EXPECT_EQ(header.intervalStartMs(), static_cast<double>(0.1f));
  EXPECT_EQ(header.intervalLengthMs(), static_cast<double>(16777216.0f - 0.1f));
}

TEST_F(WriteCcd, DecimationIsDescribed) {
  converter.filters.decimationFactor = 2;
  converter.values.samplingFrequency = 50;
  const CcdHeader header = headerOf(written());
  EXPECT_EQ(header.decimationFactor(), 2);
  EXPECT_EQ(header.samplingFrequency(), 50.0);
  EXPECT_EQ(header.nrOfTimePoints(), 321);
  EXPECT_EQ(header.bytes[576], 0);
}

TEST_F(WriteCcd, AForcedUpdateWritesEveryValue) {
  converter.options.forceHeaderUpdate = true;
  const std::string bytes = written();
  const CcdHeader header = headerOf(bytes);
  EXPECT_EQ(header.nrOfSelectedChannels(), 2);
  EXPECT_EQ(header.decimationFactor(), 1);
  EXPECT_EQ(header.samplingFrequency(), 100.0);
  EXPECT_EQ(header.intervalStartMs(), 100.0);
  EXPECT_EQ(header.nrOfTimePoints(), 321);
  EXPECT_TRUE(processed(bytes, 1));
  for (size_t i = 576; i < 584; ++i) EXPECT_EQ(header.bytes[i], 0) << i;
}

TEST_F(WriteCcd, EachFlagFollowsItsSwitch) {
  using Set = std::function<void(StageSwitches&)>;
  const std::vector<std::pair<size_t, Set>> flags = {
      {576, [](StageSwitches& s) { s.intervalRestricted = true; }},
      {577, [](StageSwitches& s) { s.filteringNeeded = true; }},
      {578, [](StageSwitches& s) { s.useAverageReference = true; }},
      {579, [](StageSwitches& s) { s.correctSaturations = true; }},
      {580, [](StageSwitches& s) { s.correctGradient = true; }},
      {581, [](StageSwitches& s) { s.correctBCG = true; }},
      {582, [](StageSwitches& s) { s.correctOcular = true; }},
      {583, [](StageSwitches& s) { s.scalingNeeded = true; }},
  };
  for (const auto& [offset, set] : flags) {
    converter.switches = StageSwitches();
    converter.switches.processingNeeded = true;
    set(converter.switches);
    converter.channels.channelDescription.header = before;
    const std::string bytes = written();
    for (size_t i = 576; i < 584; ++i) EXPECT_EQ(bytes[i], i == offset ? 1 : 0) << offset << " " << i;
  }
}

TEST_F(WriteCcd, FlagsOfTheInputStaySet) {
  for (size_t i = 576; i < 584; ++i) converter.channels.channelDescription.header.bytes[i] = 1;
  const std::string bytes = written();
  for (size_t i = 576; i < 584; ++i) EXPECT_EQ(bytes[i], 1) << i;
}

TEST_F(WriteCcd, IsSkippedWithoutProcessing) {
  converter.switches.processingNeeded = false;
  EXPECT_TRUE(converter.writeCcd());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_TRUE(folder.names().empty());
  converter.switches.rewriteNeeded = true;
  EXPECT_TRUE(converter.writeCcd());
  EXPECT_EQ(folder.names(), Lines{"run1_x.ccd"});
}

TEST_F(WriteCcd, AFileThatCannotBeCreatedIsReported) {
  std::filesystem::create_directory(folder.path("run1_x.ccd"));
  EXPECT_FALSE(converter.writeCcd());
  EXPECT_EQ(host.boxes(), Lines{"Error accessing CCD file.<br>Is a directory."});
}

TEST(CcdOfARun, KeepsTheRecordsOfTheCcdThatWasRead) {
  TestFolder folder;
  ScriptedHost host;
  writeFile(folder.path("run1.ctc"), countingRecording(3, 200).bytes());
  ChannelDescription description;
  description.header.bytes[0] = 0x77;
  description.header.bytes[520] = 0x78;
  description.header.setCtcFileName("run1.ctc");
  description.header.setPrtFileName("old.prt");
  for (int c = 0; c < 4; ++c) {
    description.channelRecords.push_back(CcdChannelRecord::make("E" + std::to_string(c), 3, 100));
    description.channelRecords.back().bytes[370] = static_cast<unsigned char>(c + 1);
  }
  description.extraRecords.resize(1);
  description.extraRecords[0].fill(0x33);
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  writeFile(folder.path("run1.ccd"), {bytes.begin(), bytes.end()});
  host.fileAnswers = {folder.path("run1.ccd")};
  host.integerAnswers = {1};
  host.yesNoAnswers = {0};
  PluginConverter converter;
  ASSERT_TRUE(converter.start());

  ChannelDescription written;
  ASSERT_EQ(readCcdFile(folder.path("run1_GRA.ccd"), written), CcdReadResult::Ok);
  EXPECT_EQ(written.header.bytes[0], 0x77);
  EXPECT_EQ(written.header.bytes[520], 0x78);
  EXPECT_EQ(written.header.ctcFileName(), "run1_GRA.ctc");
  EXPECT_EQ(written.header.prtFileName(), "old.prt") << "no protocol was written under another name";
  EXPECT_TRUE(written.header.flag(CcdHeader::Flag::GradientCorrected));
  EXPECT_FALSE(written.header.flag(CcdHeader::Flag::BcgCorrected));
  EXPECT_FALSE(written.header.flag(CcdHeader::Flag::Filtered));
  ASSERT_EQ(written.channelRecords.size(), 4u);
  for (size_t c = 0; c < 4; ++c)
    EXPECT_EQ(written.channelRecords[c].bytes, description.channelRecords[c].bytes) << c;
  ASSERT_EQ(written.extraRecords.size(), 1u);
  EXPECT_EQ(written.extraRecords[0], description.extraRecords[0]);
}

} // namespace
} // namespace emeg
