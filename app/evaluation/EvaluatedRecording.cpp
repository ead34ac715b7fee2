#include "app/evaluation/EvaluatedRecording.h"

#include "files/exchange/FileExtension.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace emeg {

bool isCtcFile(const std::string& path) {
  return extensionOf(path) == ".ctc";
}

EvaluatedRecording::EvaluatedRecording(const std::string& path) : path_(path) {
  if (isCtcFile(path))
    openCtc();
  else
    openOther();
}

void EvaluatedRecording::openOther() {
  try {
    reader_ = openRecording(path_);
  } catch (const RecordingError& error) {
    throw UnreadableFile(error.what());
  }
  nrOfChannels_ = reader_->header().nrOfChannels();
  nrOfTimePoints_ = reader_->header().nrOfTimePoints;
  samplingFrequency_ = reader_->header().samplingFrequency;
}

void EvaluatedRecording::openCtc() {
  const std::string& path = path_;
  if (!file_.openForReading(path)) throw UnreadableFile("cannot open " + path + ": " + std::strerror(errno));
  std::array<unsigned char, ctcHeaderSize> bytes{};
  if (!file_.read(bytes.data(), bytes.size())) throw UnreadableFile(path + " is shorter than a CTC header");
  header_ = decodeCtcHeader(bytes);
  format_ = inputSampleFormatOf(header_.dataType);
  if (format_ == SampleFormat::Unsupported)
    throw UnreadableFile(path + " holds samples of the unknown type " + std::to_string(header_.dataType));
  if (header_.nrOfChannels < 1 || header_.nrOfTimePoints < 1 || !(header_.samplingFrequency > 0) ||
      !std::isfinite(header_.samplingFrequency))
    throw UnreadableFile(path + " has no channels, no time points or no sampling frequency in its header");
  const int64_t needed = int64_t{header_.nrOfChannels} * header_.nrOfTimePoints * bytesPerSampleOf(format_);
  if (file_.size() - static_cast<int64_t>(ctcHeaderSize) < needed)
    throw UnreadableFile(path + " is shorter than its header says");
  nrOfChannels_ = header_.nrOfChannels;
  nrOfTimePoints_ = header_.nrOfTimePoints;
  samplingFrequency_ = static_cast<double>(header_.samplingFrequency);
}

void EvaluatedRecording::readBytes(int64_t position, int64_t nrOfBytes) {
  bytes_.resize(static_cast<size_t>(nrOfBytes));
  if (!file_.seek(static_cast<int64_t>(ctcHeaderSize) + position) ||
      !file_.read(bytes_.data(), bytes_.size()))
    throw UnreadableFile("cannot read " + path_);
  if (!hostIsLittleEndian) swapByteGroups(bytes_.data(), bytes_.size(), bytesPerSampleOf(format_));
}

void EvaluatedRecording::read(int64_t first, int64_t count, std::vector<float>& samples) {
  if (reader_ == nullptr) return readCtc(first, count, samples);
  values_.resize(static_cast<size_t>(nrOfChannels_ * count));
  try {
    reader_->read(first, count, values_);
  } catch (const RecordingError& error) {
    throw UnreadableFile(error.what());
  }
  samples.resize(values_.size());
  std::transform(values_.begin(), values_.end(), samples.begin(),
                 [](double value) { return static_cast<float>(value); });
}

void EvaluatedRecording::readCtc(int64_t first, int64_t count, std::vector<float>& samples) {
  const int64_t channels = header_.nrOfChannels;
  const int64_t sampleSize = bytesPerSampleOf(format_);
  samples.resize(static_cast<size_t>(channels * count));
  const bool multiplexed = header_.dataOrganisation != 1;
  if (multiplexed) readBytes(first * channels * sampleSize, count * channels * sampleSize);
  for (int64_t c = 0; c < channels; ++c) {
    if (!multiplexed) readBytes((c * header_.nrOfTimePoints + first) * sampleSize, count * sampleSize);
    const unsigned char* const from = bytes_.data() + (multiplexed ? c * sampleSize : 0);
    convertSamplesToFloat(format_, from, multiplexed ? channels : 1, count, samples.data() + c * count);
  }
}

void requireSameShape(const EvaluatedRecording& one, const EvaluatedRecording& other) {
  if (one.nrOfChannels() != other.nrOfChannels() || one.nrOfTimePoints() != other.nrOfTimePoints() ||
      one.samplingFrequency() != other.samplingFrequency())
    throw UnreadableFile(one.path() + " and " + other.path() +
                         " differ in channels, time points or sampling frequency");
}

} // namespace emeg
