#include "app/correct/ScratchInput.h"

#include "files/formats/CtcFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <vector>

namespace emeg {

namespace {

constexpr int32_t channelAfterChannel = 1;

int32_t ctcTypeOf(ScratchSamples samples) {
  return samples == ScratchSamples::Float32 ? 1 : 2;
}

[[noreturn]] void throwWriteFailure(const std::string& path) {
  throw FailedRun(fmt::format("\"{}\" cannot be written: {}. Make room there, or choose another folder with "
                              "--scratch FOLDER.",
                              path, errno != 0 ? std::strerror(errno) : "unknown error"));
}

} // namespace

struct ScratchChannel::File {
  std::string path;
  ScratchSamples samples;
  int64_t nrOfTimePoints;
  std::fstream stream;
  std::vector<char> bytes;

  void seek(int channel, int64_t first) {
    const int64_t sample = channel * nrOfTimePoints + first;
    const auto position = static_cast<std::streamoff>(ctcHeaderSize) + sample * bytesPerSampleOf(samples);
    stream.seekg(position);
    stream.seekp(position);
  }
};

ScratchChannel::ScratchChannel(const std::string& path, ScratchSamples samples, int64_t nrOfTimePoints)
    : file_(std::make_unique<File>()) {
  file_->path = path;
  file_->samples = samples;
  file_->nrOfTimePoints = nrOfTimePoints;
  file_->stream.open(path, std::ios::in | std::ios::out | std::ios::binary);
  if (!file_->stream) throwWriteFailure(path);
}

ScratchChannel::~ScratchChannel() = default;

void ScratchChannel::read(int channel, int64_t first, std::span<double> values) {
  File& file = *file_;
  file.seek(channel, first);
  file.bytes.resize(values.size() * static_cast<size_t>(bytesPerSampleOf(file.samples)));
  if (!file.stream.read(file.bytes.data(), static_cast<std::streamsize>(file.bytes.size())))
    throw FailedRun(fmt::format("\"{}\" cannot be read back.", file.path));
  for (size_t i = 0; i < values.size(); ++i) {
    if (file.samples == ScratchSamples::Float64) {
      std::memcpy(&values[i], file.bytes.data() + i * sizeof(double), sizeof(double));
    } else {
      float value = 0;
      std::memcpy(&value, file.bytes.data() + i * sizeof(float), sizeof(float));
      values[i] = static_cast<double>(value);
    }
  }
}

void ScratchChannel::write(int channel, int64_t first, std::span<const double> values) {
  File& file = *file_;
  file.seek(channel, first);
  file.bytes.resize(values.size() * static_cast<size_t>(bytesPerSampleOf(file.samples)));
  for (size_t i = 0; i < values.size(); ++i)
    storeSample(ctcTypeOf(file.samples), values[i], file.bytes.data(), static_cast<int64_t>(i));
  errno = 0;
  if (!file.stream.write(file.bytes.data(), static_cast<std::streamsize>(file.bytes.size())))
    throwWriteFailure(file.path);
}

void ScratchChannel::close() {
  errno = 0;
  file_->stream.close();
  if (!file_->stream) throwWriteFailure(file_->path);
}

ScratchContent writeScratchInput(RecordingReader& recording, const CorrectionPlan& plan,
                                 ScratchSamples samples, const std::string& path,
                                 const std::function<void(double)>& progress) {
  const RecordingHeader& header = recording.header();
  CtcHeader ctc;
  ctc.dataType = ctcTypeOf(samples);
  ctc.dataOrganisation = channelAfterChannel;
  ctc.nrOfChannels = static_cast<int32_t>(plan.channels.corrected.size());
  ctc.nrOfTimePoints = static_cast<int32_t>(plan.nrOfTimePoints);
  ctc.samplingFrequency = static_cast<float>(header.samplingFrequency);
  const auto bytes = encodeCtcHeader(ctc);
  {
    std::ofstream file(path, std::ios::binary);
    errno = 0;
    if (!file.write(reinterpret_cast<const char*>(bytes.data()),
                    static_cast<std::streamsize>(bytes.size())) ||
        !file.flush())
      throwWriteFailure(path);
  }

  ScratchContent content;
  ScratchChannel out(path, samples, plan.nrOfTimePoints);
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<double> values;
  for (int64_t done = 0; done < plan.nrOfTimePoints;) {
    const int64_t count = std::min(blockLength, plan.nrOfTimePoints - done);
    const auto length = static_cast<size_t>(count);
    values.resize(length * header.channels.size());
    recording.read(plan.firstTimePoint + done, count, values);
    for (size_t k = 0; k < plan.channels.corrected.size(); ++k) {
      const auto channel = static_cast<size_t>(plan.channels.corrected[k]);
      const auto stretch = std::span<const double>(values).subspan(channel * length, length);
      content.nrOfNotFinite +=
          std::count_if(stretch.begin(), stretch.end(), [](double value) { return !std::isfinite(value); });
      out.write(static_cast<int>(k), done, stretch);
    }
    done += count;
    progress(static_cast<double>(done) / static_cast<double>(plan.nrOfTimePoints));
  }
  out.close();
  return content;
}

} // namespace emeg
