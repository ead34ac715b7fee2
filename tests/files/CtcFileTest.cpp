#include "files/formats/CtcFile.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace emeg {
namespace {

using HeaderBytes = std::array<unsigned char, ctcHeaderSize>;

TEST(CtcHeader, IsWrittenByteForByte) {
  CtcHeader header;
  header.nrOfChannels = 0x0102;
  header.nrOfTimePoints = 0x01020304;
  header.samplingFrequency = 5000.0f; // 0x459c4000
  const HeaderBytes expected = {1,    0,    0, 0, 0, 0, 0, 0, 1,    0,    0,    0,    2, 0, 0, 0,
                                0x02, 0x01, 0, 0, 4, 3, 2, 1, 0x00, 0x40, 0x9c, 0x45, 0, 0, 0, 0};
  EXPECT_EQ(encodeCtcHeader(header), expected);
}

TEST(CtcHeader, ReadsBackWhatWasWritten) {
  CtcHeader header{3, 1, 64, 123456789, 2048.5f};
  const CtcHeader read = decodeCtcHeader(encodeCtcHeader(header));
  EXPECT_EQ(read.dataType, 3);
  EXPECT_EQ(read.dataOrganisation, 1);
  EXPECT_EQ(read.nrOfChannels, 64);
  EXPECT_EQ(read.nrOfTimePoints, 123456789);
  EXPECT_EQ(read.samplingFrequency, 2048.5f);
}

TEST(CtcHeader, OfARunsOwnOutputIsMultiplexedFloat) {
  const CtcHeader read = decodeCtcHeader(encodeCtcHeader(CtcHeader{}));
  EXPECT_EQ(inputSampleFormatOf(read.dataType), SampleFormat::Float32);
  EXPECT_NE(read.dataOrganisation, 1) << "everything but 1 is multiplexed";
}

TEST(CtcHeader, ChannelCountsFrom32768OnReadAsNegative) {
  HeaderBytes bytes = encodeCtcHeader(CtcHeader{});
  bytes[16] = 0x00;
  bytes[17] = 0x80;
  EXPECT_EQ(decodeCtcHeader(bytes).nrOfChannels, -32768);
  bytes[16] = 0xff;
  bytes[17] = 0xff;
  EXPECT_EQ(decodeCtcHeader(bytes).nrOfChannels, -1);
  bytes[17] = 0x7f;
  EXPECT_EQ(decodeCtcHeader(bytes).nrOfChannels, 32767);
}

TEST(CtcHeader, ChannelCountsAreCutTo16BitsOnWriting) {
  CtcHeader header;
  header.nrOfChannels = 0x12345;
  const HeaderBytes bytes = encodeCtcHeader(header);
  EXPECT_EQ(bytes[16], 0x45);
  EXPECT_EQ(bytes[17], 0x23);
  EXPECT_EQ(bytes[18], 0);
}

TEST(CtcHeader, TheFirstEightBytesAndTheReservedOnesMayHoldAnything) {
  const CtcHeader header{2, 7, 3, -5, 250.0f};
  HeaderBytes bytes = encodeCtcHeader(header);
  for (const size_t reserved : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 18u, 19u, 28u, 29u, 30u, 31u}) {
    bytes[reserved] = 0xee;
  }
  const CtcHeader read = decodeCtcHeader(bytes);
  EXPECT_EQ(read.dataType, 2);
  EXPECT_EQ(read.dataOrganisation, 7);
  EXPECT_EQ(read.nrOfChannels, 3);
  EXPECT_EQ(read.nrOfTimePoints, -5);
  EXPECT_EQ(read.samplingFrequency, 250.0f);
}

TEST(CtcHeader, AnyBytesDecodeAndSurviveARoundTrip) {
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    HeaderBytes bytes;
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
    const CtcHeader header = decodeCtcHeader(bytes);
    ASSERT_GE(header.nrOfChannels, -32768);
    ASSERT_LE(header.nrOfChannels, 32767);
    HeaderBytes expected{};
    expected[0] = 1;
    std::memcpy(expected.data() + 8, bytes.data() + 8, 10);
    std::memcpy(expected.data() + 20, bytes.data() + 20, 8);
    ASSERT_EQ(encodeCtcHeader(header), expected);
  }
}

TEST(CtcSamples, TypeFourIsWrittenButNotRead) {
  EXPECT_EQ(inputSampleFormatOf(4), SampleFormat::Unsupported);
  EXPECT_EQ(bytesPerWrittenSample(4), 1);
}

TEST(CtcSamples, EveryTypeHasItsCodeAndWidth) {
  EXPECT_EQ(inputSampleFormatOf(1), SampleFormat::Float32);
  EXPECT_EQ(inputSampleFormatOf(2), SampleFormat::Float64);
  EXPECT_EQ(inputSampleFormatOf(3), SampleFormat::Int16);
  EXPECT_EQ(static_cast<int>(SampleFormat::Int16), 1);
  EXPECT_EQ(static_cast<int>(SampleFormat::Float32), 2);
  EXPECT_EQ(static_cast<int>(SampleFormat::Int32), 3);
  EXPECT_EQ(static_cast<int>(SampleFormat::Float64), 4);
  EXPECT_EQ(bytesPerSampleOf(SampleFormat::Int16), 2);
  EXPECT_EQ(bytesPerSampleOf(SampleFormat::Float32), 4);
  EXPECT_EQ(bytesPerSampleOf(SampleFormat::Int32), 4);
  EXPECT_EQ(bytesPerSampleOf(SampleFormat::Float64), 8);
  EXPECT_EQ(bytesPerSampleOf(SampleFormat::Unsupported), 0);
  EXPECT_EQ(bytesPerWrittenSample(1), 4);
  EXPECT_EQ(bytesPerWrittenSample(2), 8);
  EXPECT_EQ(bytesPerWrittenSample(3), 2);
  for (const int32_t other :
       {0, 5, -1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
    EXPECT_EQ(inputSampleFormatOf(other), SampleFormat::Unsupported) << other;
    EXPECT_EQ(bytesPerWrittenSample(other), 0) << other;
  }
}

TEST(CtcSamples, SwappingReversesEveryGroup) {
  std::array<unsigned char, 8> bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  swapByteGroups(bytes.data(), bytes.size(), 2);
  EXPECT_EQ(bytes, (std::array<unsigned char, 8>{2, 1, 4, 3, 6, 5, 8, 7}));
  bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  swapByteGroups(bytes.data(), bytes.size(), 4);
  EXPECT_EQ(bytes, (std::array<unsigned char, 8>{4, 3, 2, 1, 8, 7, 6, 5}));
  bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  swapByteGroups(bytes.data(), bytes.size(), 8);
  EXPECT_EQ(bytes, (std::array<unsigned char, 8>{8, 7, 6, 5, 4, 3, 2, 1}));
  bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  swapByteGroups(bytes.data(), 7, 4);
  EXPECT_EQ(bytes, (std::array<unsigned char, 8>{4, 3, 2, 1, 5, 6, 7, 8})) << "an incomplete group stays";
  swapByteGroups(bytes.data(), 0, 8);
}

TEST(CtcSamples, TheMachinesByteOrderIsKnown) {
  const int32_t one = 1;
  unsigned char first = 0;
  std::memcpy(&first, &one, 1);
  EXPECT_EQ(hostIsLittleEndian, first == 1);
}

TEST(CtcSamples, IntegersConvertAsSignedNumbers) {
  const std::array<int16_t, 4> shorts = {0, -1, 32767, -32768};
  std::array<float, 4> out{};
  convertSamplesToFloat(SampleFormat::Int16, shorts.data(), 1, 4, out.data());
  EXPECT_EQ(out, (std::array<float, 4>{0.0f, -1.0f, 32767.0f, -32768.0f}));
  const std::array<int32_t, 4> ints = {0, -1, 8388607, std::numeric_limits<int32_t>::min()};
  convertSamplesToFloat(SampleFormat::Int32, ints.data(), 1, 4, out.data());
  EXPECT_EQ(out, (std::array<float, 4>{0.0f, -1.0f, 8388607.0f, -2147483648.0f}));
}

TEST(CtcSamples, DoublesAreRoundedToFloat) {
  const std::array<double, 4> doubles = {0.1, -1e-3, 16777217.0, 1e300};
  std::array<float, 4> out{};
  convertSamplesToFloat(SampleFormat::Float64, doubles.data(), 1, 4, out.data());
  EXPECT_EQ(out[0], 0.1f);
  EXPECT_EQ(out[1], -1e-3f);
  EXPECT_EQ(out[2], 16777216.0f);
  EXPECT_TRUE(std::isinf(out[3]));
}

TEST(CtcSamples, AStrideTakesOneChannelOutOfAMultiplexedBlock) {
  const std::array<float, 6> block = {0, 10, 1, 11, 2, 12};
  std::array<float, 3> out{};
  convertSamplesToFloat(SampleFormat::Float32, block.data() + 1, 2, 3, out.data());
  EXPECT_EQ(out, (std::array<float, 3>{10, 11, 12}));
}

TEST(CtcSamples, NeedNoAlignment) {
  std::array<unsigned char, 17> bytes{};
  const std::array<double, 2> doubles = {1.5, -2.5};
  std::memcpy(bytes.data() + 1, doubles.data(), 16);
  std::array<float, 2> out{};
  convertSamplesToFloat(SampleFormat::Float64, bytes.data() + 1, 1, 2, out.data());
  EXPECT_EQ(out, (std::array<float, 2>{1.5f, -2.5f}));
  storeSample(2, 7.25, bytes.data() + 1, 1);
  convertSamplesToFloat(SampleFormat::Float64, bytes.data() + 1, 1, 2, out.data());
  EXPECT_EQ(out[1], 7.25f);
}

template <typename Sample>
Sample stored(int32_t dataType, double value) {
  std::array<Sample, 3> out{};
  storeSample(dataType, value, out.data(), 1);
  EXPECT_EQ(out[0], Sample{});
  EXPECT_EQ(out[2], Sample{});
  return out[1];
}

TEST(CtcSamples, AreStoredRoundedToFloatOrAsTheyAre) {
  EXPECT_EQ(stored<float>(1, 0.1), 0.1f);
  EXPECT_TRUE(std::isinf(stored<float>(1, -1e300)));
  EXPECT_TRUE(std::isnan(stored<float>(1, std::numeric_limits<double>::quiet_NaN())));
  EXPECT_EQ(stored<double>(2, 0.1), 0.1);
}

TEST(CtcSamples, IntegersAreTruncatedTowardZeroAndKeepTheirLowBits) {
  EXPECT_EQ(stored<int16_t>(3, 2.9), 2);
  EXPECT_EQ(stored<int16_t>(3, -2.9), -2);
  EXPECT_EQ(stored<int16_t>(3, 32768.0), -32768) << "no clamping";
  EXPECT_EQ(stored<int16_t>(3, 65537.7), 1);
  EXPECT_EQ(stored<int16_t>(3, -65537.7), -1);
  EXPECT_EQ(stored<int8_t>(4, 127.99), 127);
  EXPECT_EQ(stored<int8_t>(4, 128.0), -128);
  EXPECT_EQ(stored<int8_t>(4, 300.0), 44);
  EXPECT_EQ(stored<int8_t>(4, -129.0), 127);
}

TEST(CtcSamples, IntegersOfValuesThatAreNoneAreZero) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double value : {infinity, -infinity, std::nan(""), 1e19, -1e19, 9223372036854775808.0}) {
    EXPECT_EQ(stored<int16_t>(3, value), 0) << value;
    EXPECT_EQ(stored<int8_t>(4, value), 0) << value;
  }
}

TEST(CtcSamples, OfAnUnknownTypeAreNotStored) {
  std::array<unsigned char, 8> out = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const int32_t other : {0, 5, -1}) storeSample(other, 99.0, out.data(), 0);
  EXPECT_EQ(out, (std::array<unsigned char, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
  std::array<float, 2> converted = {1, 2};
  convertSamplesToFloat(SampleFormat::Unsupported, out.data(), 1, 2, converted.data());
  EXPECT_EQ(converted, (std::array<float, 2>{0, 0}));
}

} // namespace
} // namespace emeg
