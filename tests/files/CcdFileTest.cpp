#include "files/formats/CcdFile.h"

#include "files/formats/BinaryFile.h"
#include "tests/files/ScratchFolder.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace emeg {
namespace {

std::string asText(const std::vector<unsigned char>& bytes) {
  return {bytes.begin(), bytes.end()};
}

double doubleAt(const unsigned char* bytes) {
  uint64_t bits = 0;
  for (int i = 7; i >= 0; --i) bits = bits << 8 | bytes[i];
  double value = 0;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

/// A description whose every byte is random, with counts that fit.
ChannelDescription randomDescription(unsigned seed, int nrOfChannels, int nrOfExtraRecords) {
  std::mt19937 random(seed);
  const auto fill = [&](auto& bytes) {
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  };
  ChannelDescription description;
  fill(description.header.bytes);
  description.header.bytes[256] = 0;
  description.header.bytes[512] = 0;
  description.header.setNrOfChannels(nrOfChannels);
  description.header.bytes[575] = static_cast<unsigned char>(nrOfExtraRecords);
  description.channelRecords.resize(static_cast<size_t>(nrOfChannels));
  for (CcdChannelRecord& record : description.channelRecords) fill(record.bytes);
  description.extraRecords.resize(static_cast<size_t>(nrOfExtraRecords));
  for (CcdExtraRecord& record : description.extraRecords) fill(record);
  return description;
}

TEST(CcdHeader, FieldsStandAtTheirOffsets) {
  CcdHeader header;
  header.setCtcFileName("run1_GRA.ctc");
  header.setPrtFileName("run1_GRA.prt");
  header.setNrOfChannels(0x0102);
  header.setDecimationFactor(0x0304);
  header.setNrOfSelectedChannels(0x0506);
  header.setSamplingFrequency(250.0);
  header.setIntervalLengthMs(1000.5);
  header.setIntervalStartMs(2000.25);
  header.setIntervalEndMs(3000.75);
  header.setNrOfTimePoints(0x0708090a);
  const unsigned char* bytes = header.bytes.data();
  EXPECT_EQ(bytes[0], 0) << "a description built anew has a zero first byte";
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes + 1), "run1_GRA.ctc");
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes + 257), "run1_GRA.prt");
  EXPECT_EQ(bytes[513], 0x02);
  EXPECT_EQ(bytes[514], 0x01);
  EXPECT_EQ(bytes[535], 0x04);
  EXPECT_EQ(bytes[536], 0x03);
  EXPECT_EQ(bytes[537], 0x06);
  EXPECT_EQ(bytes[538], 0x05);
  EXPECT_EQ(doubleAt(bytes + 539), 250.0);
  EXPECT_EQ(doubleAt(bytes + 547), 1000.5);
  EXPECT_EQ(doubleAt(bytes + 555), 2000.25);
  EXPECT_EQ(doubleAt(bytes + 563), 3000.75);
  EXPECT_EQ(bytes[571], 0x0a);
  EXPECT_EQ(bytes[574], 0x07);

  EXPECT_EQ(header.ctcFileName(), "run1_GRA.ctc");
  EXPECT_EQ(header.prtFileName(), "run1_GRA.prt");
  EXPECT_EQ(header.nrOfChannels(), 0x0102);
  EXPECT_EQ(header.decimationFactor(), 0x0304);
  EXPECT_EQ(header.nrOfSelectedChannels(), 0x0506);
  EXPECT_EQ(header.samplingFrequency(), 250.0);
  EXPECT_EQ(header.intervalLengthMs(), 1000.5);
  EXPECT_EQ(header.intervalStartMs(), 2000.25);
  EXPECT_EQ(header.intervalEndMs(), 3000.75);
  EXPECT_EQ(header.nrOfTimePoints(), 0x0708090a);
  EXPECT_EQ(header.nrOfExtraRecords(), 0);
}

TEST(CcdHeader, SettingAFieldTouchesNoOtherByte) {
  const CcdHeader before = randomDescription(3, 5, 2).header;
  CcdHeader header = before;
  header.setNrOfSelectedChannels(header.nrOfSelectedChannels());
  header.setDecimationFactor(header.decimationFactor());
  header.setNrOfTimePoints(header.nrOfTimePoints());
  EXPECT_EQ(header.bytes, before.bytes);
  header.setDecimationFactor(header.decimationFactor() ^ 0xffff);
  for (size_t i = 0; i < ccdHeaderSize; ++i) {
    EXPECT_EQ(header.bytes[i] != before.bytes[i], i == 535 || i == 536) << i;
  }
}

TEST(CcdHeader, CountsKeepTheirLow16Bits) {
  CcdHeader header;
  header.setNrOfChannels(65535);
  EXPECT_EQ(header.nrOfChannels(), 65535);
  header.setNrOfSelectedChannels(65536 + 7);
  EXPECT_EQ(header.nrOfSelectedChannels(), 7);
  header.setDecimationFactor(-1);
  EXPECT_EQ(header.decimationFactor(), 65535);
}

TEST(CcdHeader, LongNamesAreCutAndBytesBehindTheTerminatorStayWhatTheyAre) {
  CcdHeader header;
  header.setPrtFileName("kept");
  header.setCtcFileName(std::string(1000, 'a'));
  EXPECT_EQ(header.ctcFileName(), std::string(255, 'a'));
  EXPECT_EQ(header.prtFileName(), "kept");
  header.setCtcFileName("b");
  EXPECT_EQ(header.ctcFileName(), "b");
  EXPECT_EQ(header.bytes[2], 0);
  for (size_t i = 3; i <= 255; ++i) EXPECT_EQ(header.bytes[i], 'a') << i;
  EXPECT_EQ(header.bytes[256], 0);
}

TEST(CcdHeader, FlagsAreSetEachInItsOwnByte) {
  using Flag = CcdHeader::Flag;
  size_t at = 576;
  for (const Flag which :
       {Flag::IntervalSelected, Flag::Filtered, Flag::AverageReferenced, Flag::FourthSwitch,
        Flag::GradientCorrected, Flag::BcgCorrected, Flag::OcularCorrected, Flag::LastSwitch}) {
    CcdHeader header;
    EXPECT_FALSE(header.flag(which));
    header.setFlag(which);
    EXPECT_TRUE(header.flag(which));
    std::array<unsigned char, ccdHeaderSize> expected{};
    expected[at++] = 1;
    EXPECT_EQ(header.bytes, expected);
  }
}

TEST(CcdChannelRecord, ANewOneHoldsTheDefaultsOfTheFormat) {
  const CcdChannelRecord record = CcdChannelRecord::make("Cz", 7, 5000.0);
  std::array<unsigned char, ccdChannelRecordSize> expected{};
  expected[0] = 'C';
  expected[1] = 'z';
  expected[32] = 1;     // good
  expected[34] = 7;     // type
  expected[356] = 0xf0; // 1.0
  expected[357] = 0x3f;
  expected[365] = 0x88; // 5000.0 is 0x40b3880000000000
  expected[366] = 0xb3;
  expected[367] = 0x40;
  expected[390] = 0xf0; // -1.0
  expected[391] = 0xbf;
  expected[416] = expected[417] = expected[418] = 255; // white
  expected[419] = 3;
  EXPECT_EQ(record.bytes, expected);
  EXPECT_EQ(record.name(), "Cz");
  EXPECT_TRUE(record.good());
  EXPECT_FALSE(record.processed());
  EXPECT_EQ(record.type(), 7);
  EXPECT_EQ(record.samplingFrequency(), 5000.0);
}

TEST(CcdChannelRecord, DefaultNamesCountFromZero) {
  EXPECT_EQ(CcdChannelRecord::defaultName(0), "Channel_000");
  EXPECT_EQ(CcdChannelRecord::defaultName(12), "Channel_012");
  EXPECT_EQ(CcdChannelRecord::defaultName(32766), "Channel_32766");
}

TEST(CcdChannelRecord, MarksChangeOneByteEach) {
  CcdChannelRecord record = CcdChannelRecord::make("Cz", 0, 1.0);
  record.setProcessed(true);
  EXPECT_EQ(record.bytes[33], 1);
  record.setGood(false);
  EXPECT_EQ(record.bytes[32], 0);
  EXPECT_FALSE(record.good());
  EXPECT_TRUE(record.processed());
}

TEST(CcdChannelRecord, NamesFillAtMostTheirField) {
  CcdChannelRecord record;
  record.setName(std::string(100, 'n'));
  EXPECT_EQ(record.name(), std::string(31, 'n'));
  EXPECT_EQ(record.bytes[31], 0);
  EXPECT_EQ(record.bytes[32], 0) << "the good mark was not written over";
  record.bytes.fill('u');
  EXPECT_EQ(record.name(), std::string(32, 'u')) << "a name without terminator ends with its field";
}

TEST(CcdFile, EveryByteIsCarriedThroughReadingAndWriting) {
  ScratchFolder folder;
  const std::string original = asText(encodeCcdFile(randomDescription(11, 17, 3)));
  ASSERT_EQ(original.size(), 584u + 17u * 420u + 3u * 48u);
  const std::string path = folder.write("a.ccd", original);
  ChannelDescription read;
  ASSERT_EQ(readCcdFile(path, read), CcdReadResult::Ok);
  EXPECT_EQ(read.channelRecords.size(), 17u);
  EXPECT_EQ(read.extraRecords.size(), 3u);
  EXPECT_EQ(asText(encodeCcdFile(read)), original);
}

TEST(CcdFile, NamesWithoutTerminatorAreEndedOnReading) {
  ScratchFolder folder;
  ChannelDescription description;
  std::fill_n(description.header.bytes.begin() + 1, 512, static_cast<unsigned char>('n'));
  const std::string path = folder.write("a.ccd", asText(encodeCcdFile(description)));
  ChannelDescription read;
  ASSERT_EQ(readCcdFile(path, read), CcdReadResult::Ok);
  EXPECT_EQ(read.header.ctcFileName(), std::string(255, 'n'));
  EXPECT_EQ(read.header.prtFileName(), std::string(255, 'n'));
}

TEST(CcdFile, ThatCannotBeOpenedSaysWhy) {
  ScratchFolder folder;
  ChannelDescription description;
  EXPECT_EQ(readCcdFile(folder.path("none.ccd"), description), CcdReadResult::CannotOpen);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(readCcdFile(folder.path(""), description), CcdReadResult::CannotOpen);
  EXPECT_EQ(errno, EISDIR);
}

TEST(CcdFile, ThatEndsEarlyIsTruncatedWhereverItEnds) {
  ScratchFolder folder;
  const std::string whole = asText(encodeCcdFile(randomDescription(5, 2, 1)));
  for (const size_t size : {size_t{0}, size_t{1}, size_t{583}, size_t{584}, size_t{584 + 419},
                            size_t{584 + 420}, size_t{584 + 840}, whole.size() - 1}) {
    const std::string path = folder.write("a.ccd", whole.substr(0, size));
    ChannelDescription description;
    description.header.setNrOfChannels(42);
    errno = EIO;
    EXPECT_EQ(readCcdFile(path, description), CcdReadResult::Truncated) << size;
    EXPECT_EQ(errno, 0) << size;
    EXPECT_EQ(description.header.nrOfChannels(), 42) << "a failed reading changes nothing";
  }
}

TEST(CcdFile, LargerThanItsCountsSayIsReadUpToThem) {
  ScratchFolder folder;
  const std::string whole = asText(encodeCcdFile(randomDescription(6, 2, 1)));
  ChannelDescription description;
  ASSERT_EQ(readCcdFile(folder.write("a.ccd", whole + "surplus"), description), CcdReadResult::Ok);
  EXPECT_EQ(asText(encodeCcdFile(description)), whole);
}

TEST(CcdFile, TheCountsWrittenAreThoseOfTheRecords) {
  ChannelDescription description = randomDescription(7, 4, 2);
  description.header.setNrOfChannels(65535);
  description.header.bytes[575] = 200;
  const std::vector<unsigned char> bytes = encodeCcdFile(description);
  EXPECT_EQ(bytes.size(), 584u + 4u * 420u + 2u * 48u);
  EXPECT_EQ(bytes[513], 4);
  EXPECT_EQ(bytes[514], 0);
  EXPECT_EQ(bytes[575], 2);
  EXPECT_EQ(description.header.nrOfChannels(), 65535);
}

TEST(CcdFile, AnyBytesGiveACompleteDescriptionOrNone) {
  ScratchFolder folder;
  std::mt19937 random(2);
  int nrOfComplete = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string bytes(random() % 3000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    if (bytes.size() >= 584 && i % 2 == 0) { // half of them with counts that may fit
      bytes[513] = static_cast<char>(random() % 6);
      bytes[514] = 0;
      bytes[575] = static_cast<char>(random() % 4);
    }
    ChannelDescription description;
    // A new file each time: emptying an old one makes some file systems wait for the disk.
    const std::string path = folder.write(std::to_string(i) + ".ccd", bytes);
    const CcdReadResult result = readCcdFile(path, description);
    std::filesystem::remove(path);
    if (result == CcdReadResult::Ok) {
      ++nrOfComplete;
      ASSERT_EQ(description.channelRecords.size(), static_cast<size_t>(description.header.nrOfChannels()));
      ASSERT_EQ(description.extraRecords.size(), static_cast<size_t>(description.header.nrOfExtraRecords()));
      bytes[256] = bytes[512] = 0;
      const std::string written = asText(encodeCcdFile(description));
      ASSERT_EQ(written, bytes.substr(0, written.size()));
    } else {
      ASSERT_EQ(result, CcdReadResult::Truncated);
      ASSERT_TRUE(description.channelRecords.empty());
    }
  }
  EXPECT_GT(nrOfComplete, 100);
}

} // namespace
} // namespace emeg
