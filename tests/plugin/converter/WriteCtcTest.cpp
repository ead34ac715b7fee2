#include "tests/plugin/converter/Converters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace emeg {
namespace {

using Lines = std::vector<std::string>;

/// Brings the recording into chunk files and leaves the writing to the test.
class StoppedConverter : public QuietConverter {
public:
  bool prepare(ScriptedHost& host) {
    options.forceHeaderUpdate = true;
    options.selectTimeInterval = true;
    host.dialogIntegers[2] = 1;
    host.integerAnswers.push_back(0);
    return defineParameters() && processChannels();
  }
};

template <typename Value>
Value valueAt(const std::string& bytes, size_t offset) {
  Value value{};
  std::memcpy(&value, bytes.data() + offset, sizeof(Value));
  return value;
}

struct WriteCtc : ::testing::Test {
  WriteCtc() : recording(countingRecording(3, 100, 250)), chosen(recording) {
    recording.samples[1][7] = -2.75;
    recording.samples[2][99] = 70000.5;
    writeFile(chosen.ctcPath(), recording.bytes());
    EXPECT_TRUE(converter.prepare(chosen.host));
    chosen.host.calls.clear();
  }
  std::string outputPath() const { return chosen.folder.path("run1_0-400ms.ctc"); }
  std::string written(int32_t type, int32_t organisation) {
    EXPECT_TRUE(converter.writeCtc(type, organisation));
    return readFile(outputPath());
  }
  Recording recording;
  ChosenRecording chosen;
  StoppedConverter converter;
};

TEST_F(WriteCtc, StartsWithTheHeader) {
  const std::string bytes = written(1, 2);
  EXPECT_EQ(chosen.host.calls, Lines{"log " + line("Writing CTC")});
  ASSERT_EQ(bytes.size(), 32u + 3 * 100 * 4);
  EXPECT_EQ(valueAt<uint16_t>(bytes, 0), 1);
  EXPECT_EQ(valueAt<uint16_t>(bytes, 2), 0);
  EXPECT_EQ(valueAt<uint32_t>(bytes, 4), 0u);
  EXPECT_EQ(valueAt<int32_t>(bytes, 8), 1);
  EXPECT_EQ(valueAt<int32_t>(bytes, 12), 2);
  EXPECT_EQ(valueAt<int16_t>(bytes, 16), 3);
  EXPECT_EQ(valueAt<uint16_t>(bytes, 18), 0);
  EXPECT_EQ(valueAt<int32_t>(bytes, 20), 100);
  EXPECT_EQ(valueAt<float>(bytes, 24), 250.0f);
  EXPECT_EQ(valueAt<uint32_t>(bytes, 28), 0u);
}

TEST_F(WriteCtc, MultiplexedStoresTimePointAfterTimePoint) {
  const std::string bytes = written(1, 2);
  for (size_t t = 0; t < 100; ++t)
    for (size_t c = 0; c < 3; ++c)
      ASSERT_EQ(valueAt<float>(bytes, 32 + (t * 3 + c) * 4), static_cast<float>(recording.samples[c][t]));
}

TEST_F(WriteCtc, EveryOtherOrganisationStoresChannelAfterChannel) {
  const std::string bytes = written(1, 7);
  ASSERT_EQ(bytes.size(), 32u + 3 * 100 * 4);
  EXPECT_EQ(valueAt<int32_t>(bytes, 12), 7);
  for (size_t c = 0; c < 3; ++c)
    for (size_t t = 0; t < 100; ++t)
      ASSERT_EQ(valueAt<float>(bytes, 32 + (c * 100 + t) * 4), static_cast<float>(recording.samples[c][t]));
}

TEST_F(WriteCtc, DoublesAreStoredAsTheyAre) {
  converter.channels.channelScale[1] = 0.1;
  const std::string bytes = written(2, 1);
  ASSERT_EQ(bytes.size(), 32u + 3 * 100 * 8);
  EXPECT_EQ(valueAt<double>(bytes, 32 + (100 + 7) * 8), -2.75 * 0.1);
  EXPECT_EQ(valueAt<double>(bytes, 32 + (200 + 99) * 8), 70000.5);
}

TEST_F(WriteCtc, IntegersAreTruncatedTowardZeroAndKeepTheirLowBits) {
  const std::string bytes = written(3, 2);
  ASSERT_EQ(bytes.size(), 32u + 3 * 100 * 2);
  EXPECT_EQ(valueAt<int16_t>(bytes, 32 + (7 * 3 + 1) * 2), -2);
  EXPECT_EQ(valueAt<int16_t>(bytes, 32 + (99 * 3 + 2) * 2), static_cast<int16_t>(70000 - 65536));
}

TEST_F(WriteCtc, BytesKeepTheirLowEightBitsInBothOrganisations) {
  std::string bytes = written(4, 2);
  ASSERT_EQ(bytes.size(), 32u + 3 * 100);
  EXPECT_EQ(valueAt<int8_t>(bytes, 32 + 7 * 3 + 1), -2);
  EXPECT_EQ(valueAt<uint8_t>(bytes, 32 + 99 * 3 + 2), static_cast<uint8_t>(70000 % 256));
}

TEST_F(WriteCtc, BytesChannelAfterChannel) {
  const std::string bytes = written(4, 1);
  ASSERT_EQ(bytes.size(), 32u + 3 * 100);
  EXPECT_EQ(valueAt<int8_t>(bytes, 32 + 100 + 7), -2);
}

TEST_F(WriteCtc, ScalesAndShiftsByTheChannelsValues) {
  converter.channels.channelScale = {2, 0.5, -1};
  converter.channels.channelOffset = {0, 10, 1000};
  const std::string bytes = written(1, 2);
  EXPECT_EQ(valueAt<float>(bytes, 32 + (5 * 3 + 0) * 4), 10.0f);
  EXPECT_EQ(valueAt<float>(bytes, 32 + (5 * 3 + 1) * 4), 1005.0f / 2 + 10);
  EXPECT_EQ(valueAt<float>(bytes, 32 + (5 * 3 + 2) * 4), -1005.0f);
}

TEST_F(WriteCtc, RemovesTheChunkFilesAndStoresItsNameInTheDescription) {
  written(1, 2);
  EXPECT_EQ(chosen.folder.names(), (Lines{"run1.ctc", "run1_0-400ms.ctc"}));
  EXPECT_EQ(converter.channels.channelDescription.header.ctcFileName(), "run1_0-400ms.ctc");
}

TEST_F(WriteCtc, AnUnknownTypeStopsWithoutMessageAndKeepsTheChunkFiles) {
  EXPECT_FALSE(converter.writeCtc(5, 2));
  EXPECT_EQ(chosen.host.calls, Lines{"log " + line("Writing CTC")});
  EXPECT_FALSE(exists(outputPath()));
  EXPECT_EQ(chosen.folder.names().size(), 33u) << "input and chunk files";
}

TEST_F(WriteCtc, WithoutAnyProcessingNothingIsWritten) {
  converter.switches.processingNeeded = false;
  EXPECT_TRUE(converter.writeCtc(1, 2));
  EXPECT_TRUE(chosen.host.calls.empty());
  EXPECT_FALSE(exists(outputPath()));
}

TEST_F(WriteCtc, TheFileReadsBackMultiplexed) {
  written(1, 2);
  StoppedConverter reader;
  EXPECT_TRUE(reader.openCtcFile(outputPath()));
  EXPECT_TRUE(reader.input.multiplexedInput);
  EXPECT_EQ(reader.input.inputSampleFormat, SampleFormat::Float32);
}

TEST(WriteCtcAfterAnUnknownType, TheChunkFilesOutliveTheConverter) {
  ChosenRecording chosen(countingRecording(2, 64));
  {
    StoppedConverter converter;
    ASSERT_TRUE(converter.prepare(chosen.host));
    EXPECT_FALSE(converter.writeCtc(0, 1));
  }
  const Lines names = chosen.folder.names();
  EXPECT_EQ(names.size(), 33u);
  for (const std::string& name : names) EXPECT_EQ(name.find("_0-"), std::string::npos) << name;
}

} // namespace
} // namespace emeg
