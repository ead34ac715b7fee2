#include "files/formats/CtcFile.h"

#include "files/formats/LittleEndian.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace emeg {

namespace {

constexpr size_t versionAt = 0;
constexpr size_t dataTypeAt = 8;
constexpr size_t dataOrganisationAt = 12;
constexpr size_t nrOfChannelsAt = 16;
constexpr size_t nrOfTimePointsAt = 20;
constexpr size_t samplingFrequencyAt = 24;

// Sample buffers are plain bytes from a file: nothing promises their alignment.
template <typename Sample>
void toFloat(const void* samples, int64_t stride, int64_t count, float* out) {
  const auto* bytes = static_cast<const unsigned char*>(samples);
  const int64_t step = stride * static_cast<int64_t>(sizeof(Sample));
  for (int64_t i = 0; i < count; ++i) {
    Sample sample;
    std::memcpy(&sample, bytes + i * step, sizeof(Sample));
    out[i] = static_cast<float>(sample);
  }
}

template <typename Sample>
void storeAt(void* out, int64_t index, Sample sample) {
  std::memcpy(static_cast<unsigned char*>(out) + index * static_cast<int64_t>(sizeof(Sample)), &sample,
              sizeof(Sample));
}

int64_t truncated(double value) {
  constexpr double beyondInt64 = 9223372036854775808.0;
  return std::abs(value) < beyondInt64 ? static_cast<int64_t>(value) : 0;
}

} // namespace

const bool hostIsLittleEndian = std::endian::native == std::endian::little;

SampleFormat inputSampleFormatOf(int32_t dataType) {
  switch (dataType) {
  case 1:
    return SampleFormat::Float32;
  case 2:
    return SampleFormat::Float64;
  case 3:
    return SampleFormat::Int16;
  default:
    return SampleFormat::Unsupported;
  }
}

int bytesPerSampleOf(SampleFormat format) {
  switch (format) {
  case SampleFormat::Int16:
    return 2;
  case SampleFormat::Float32:
  case SampleFormat::Int32:
    return 4;
  case SampleFormat::Float64:
    return 8;
  case SampleFormat::Unsupported:
    break;
  }
  return 0;
}

int bytesPerWrittenSample(int32_t dataType) {
  switch (dataType) {
  case 1:
    return 4;
  case 2:
    return 8;
  case 3:
    return 2;
  case 4:
    return 1;
  default:
    return 0;
  }
}

std::array<unsigned char, ctcHeaderSize> encodeCtcHeader(const CtcHeader& header) {
  std::array<unsigned char, ctcHeaderSize> bytes{};
  storeLittleEndian<uint16_t>(bytes.data() + versionAt, 1);
  storeLittleEndian(bytes.data() + dataTypeAt, header.dataType);
  storeLittleEndian(bytes.data() + dataOrganisationAt, header.dataOrganisation);
  storeLittleEndian(bytes.data() + nrOfChannelsAt, static_cast<uint16_t>(header.nrOfChannels));
  storeLittleEndian(bytes.data() + nrOfTimePointsAt, header.nrOfTimePoints);
  storeLittleEndian(bytes.data() + samplingFrequencyAt, header.samplingFrequency);
  return bytes;
}

CtcHeader decodeCtcHeader(std::span<const unsigned char, ctcHeaderSize> bytes) {
  CtcHeader header;
  header.dataType = loadLittleEndian<int32_t>(bytes.data() + dataTypeAt);
  header.dataOrganisation = loadLittleEndian<int32_t>(bytes.data() + dataOrganisationAt);
  header.nrOfChannels = loadLittleEndian<int16_t>(bytes.data() + nrOfChannelsAt);
  header.nrOfTimePoints = loadLittleEndian<int32_t>(bytes.data() + nrOfTimePointsAt);
  header.samplingFrequency = loadLittleEndian<float>(bytes.data() + samplingFrequencyAt);
  return header;
}

void swapByteGroups(void* bytes, size_t nrOfBytes, int groupSize) {
  if (groupSize < 2) return;
  const auto group = static_cast<size_t>(groupSize);
  auto* first = static_cast<unsigned char*>(bytes);
  for (size_t at = 0; nrOfBytes - at >= group; at += group) std::reverse(first + at, first + at + group);
}

void convertSamplesToFloat(SampleFormat format, const void* samples, int64_t stride, int64_t count,
                           float* out) {
  switch (format) {
  case SampleFormat::Int16:
    return toFloat<int16_t>(samples, stride, count, out);
  case SampleFormat::Float32:
    return toFloat<float>(samples, stride, count, out);
  case SampleFormat::Int32:
    return toFloat<int32_t>(samples, stride, count, out);
  case SampleFormat::Float64:
    return toFloat<double>(samples, stride, count, out);
  case SampleFormat::Unsupported:
    std::fill_n(out, std::max<int64_t>(count, 0), 0.0f);
  }
}

void storeSample(int32_t dataType, double value, void* out, int64_t index) {
  switch (dataType) {
  case 1:
    return storeAt(out, index, static_cast<float>(value));
  case 2:
    return storeAt(out, index, value);
  case 3:
    return storeAt(out, index, static_cast<int16_t>(truncated(value)));
  case 4:
    return storeAt(out, index, static_cast<int8_t>(truncated(value)));
  default:
    return;
  }
}

} // namespace emeg
