#include "app/simulation/CtcRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

constexpr int32_t int16Type = 3;
constexpr int32_t channelAfterChannel = 1;

} // namespace

bool CtcRecording::create(const std::string& path, const CtcHeader& header, double microvoltsPerUnit) {
  header_ = header;
  microvoltsPerUnit_ = microvoltsPerUnit;
  const auto bytes = encodeCtcHeader(header);
  return file_.create(path) && file_.write(bytes.data(), bytes.size());
}

double CtcRecording::stored(double microvolts) const {
  const double value = microvolts / microvoltsPerUnit_;
  if (header_.dataType != int16Type) return value;
  using Limits = std::numeric_limits<int16_t>;
  return std::clamp(std::round(value), static_cast<double>(Limits::min()),
                    static_cast<double>(Limits::max()));
}

void CtcRecording::storeAt(int64_t index, double microvolts) {
  storeSample(header_.dataType, stored(microvolts), buffer_.data(), index);
}

bool CtcRecording::writeBuffer(size_t nrOfBytes) {
  const int width = bytesPerWrittenSample(header_.dataType);
  if (!hostIsLittleEndian && width > 1) swapByteGroups(buffer_.data(), nrOfBytes, width);
  return file_.write(buffer_.data(), nrOfBytes);
}

bool CtcRecording::write(int64_t first, int64_t count, std::span<const double> microvolts) {
  const auto width = static_cast<size_t>(bytesPerWrittenSample(header_.dataType));
  const int64_t nrOfChannels = header_.nrOfChannels;
  if (header_.dataOrganisation != channelAfterChannel) {
    buffer_.resize(static_cast<size_t>(count * nrOfChannels) * width);
    for (int64_t t = 0; t < count; t++)
      for (int64_t c = 0; c < nrOfChannels; c++)
        storeAt(t * nrOfChannels + c, microvolts[static_cast<size_t>(c * count + t)]);
    return writeBuffer(buffer_.size());
  }

  buffer_.resize(static_cast<size_t>(count) * width);
  for (int64_t c = 0; c < nrOfChannels; c++) {
    for (int64_t t = 0; t < count; t++) storeAt(t, microvolts[static_cast<size_t>(c * count + t)]);
    const int64_t sample = c * header_.nrOfTimePoints + first;
    if (!file_.seek(static_cast<int64_t>(ctcHeaderSize) + sample * static_cast<int64_t>(width))) return false;
    if (!writeBuffer(buffer_.size())) return false;
  }
  return true;
}

} // namespace emeg
