#include "files/exchange/BrainVisionReader.h"

#include "files/exchange/BrainVisionHeader.h"
#include "files/exchange/BrainVisionMarkers.h"
#include "files/exchange/FileExtension.h"
#include "files/exchange/TextFile.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CtcFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace emeg {

namespace {

namespace fs = std::filesystem;

constexpr int64_t largestMarkerFile = int64_t{64} << 20;

std::string formatText(const BrainVisionHeader& header) {
  std::string text = "BrainVision, ";
  switch (header.samples) {
  case BrainVisionSamples::Int16:
    text += "16-bit integers";
    break;
  case BrainVisionSamples::Uint16:
    text += "unsigned 16-bit integers";
    break;
  case BrainVisionSamples::Int32:
    text += "32-bit integers";
    break;
  case BrainVisionSamples::Float32:
    text += "32-bit floats";
    break;
  }
  return text + (header.vectorized ? ", vectorized" : ", multiplexed");
}

class BrainVisionReader : public RecordingReader {
public:
  explicit BrainVisionReader(const std::string& path);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
  void readSamples(int64_t firstSample, int64_t count);
  /// `name` beside the header; where it is not there, the file of the header's own name and that extension
  /// (sets of files are often renamed without changing what stands in them). Empty when there is neither.
  std::string findFile(const std::string& name, const std::string& extension);
  void findLength(const BrainVisionHeader& header);
  void readMarkers(const BrainVisionHeader& header);

  std::string path_, dataPath_;
  BinaryFile data_;
  BrainVisionSamples samples_ = BrainVisionSamples::Int16;
  bool vectorized_ = false;
  bool swapped_ = false;
  std::vector<double> steps_;
  std::vector<unsigned char> bytes_;
};

BrainVisionReader::BrainVisionReader(const std::string& path) : path_(path) {
  const BrainVisionHeader header = readBrainVisionHeader(path);
  header_ = header.recording;
  header_.format = formatText(header);
  header_.files = {path};
  samples_ = header.samples;
  vectorized_ = header.vectorized;
  swapped_ = header.bigEndian == hostIsLittleEndian;
  for (RecordingChannel& channel : header_.channels) {
    steps_.push_back(channel.stored->step);
    if (samples_ == BrainVisionSamples::Float32) channel.stored.reset();
  }

  dataPath_ = findFile(header.dataFile, ".eeg");
  if (dataPath_.empty())
    throw RecordingError("\"" + path + "\" names the data file \"" + cutUtf8(header.dataFile, 200) +
                         "\", which is not beside it; put it there, or correct DataFile in the header.");
  if (!data_.openForReading(dataPath_))
    throw RecordingError("\"" + dataPath_ + "\" cannot be read: " + std::strerror(errno) + ".");
  header_.files.push_back(dataPath_);
  findLength(header);
  readMarkers(header);
}

std::string BrainVisionReader::findFile(const std::string& name, const std::string& extension) {
  std::error_code ignored;
  std::string named = besideFile(path_, fileNameOf(name));
  if (fs::is_regular_file(named, ignored)) return named;
  std::string renamed = withoutExtension(path_) + extension;
  if (!fs::is_regular_file(renamed, ignored)) return "";
  header_.warnings.push_back("\"" + path_ + "\" names \"" + cutUtf8(name, 200) +
                             "\", which is not there; \"" + fileNameOf(renamed) + "\" is read instead.");
  return renamed;
}

void BrainVisionReader::findLength(const BrainVisionHeader& header) {
  const int64_t size = data_.size();
  const int64_t bytesPerTimePoint = int64_t{header_.nrOfChannels()} * bytesPerSampleOf(samples_);
  const int64_t present = size / bytesPerTimePoint;
  const int64_t announced = header.nrOfDataPoints;
  const std::string sizes = "\"" + dataPath_ + "\" holds " + std::to_string(present) + " time points of " +
                            std::to_string(header_.nrOfChannels()) + " channels";
  if (present < 1)
    throw RecordingError(sizes + "; it is empty or cut off. Copy it again from where it was made.");
  if (announced > present)
    throw RecordingError(sizes + ", its header announces " + std::to_string(announced) +
                         ": it is cut off. Copy it again from where it was made, or correct DataPoints.");
  header_.nrOfTimePoints = present;
  if (announced == 0 && size % bytesPerTimePoint != 0) {
    if (header.vectorized)
      throw RecordingError(sizes +
                           " and a part of one: it is cut off, or NumberOfChannels or BinaryFormat are "
                           "not those of this file.");
    header_.warnings.push_back(sizes + " and a part of one, which is left out: the recording was cut off, or "
                                       "its header does not belong to it.");
  }
  if (announced > 0 && announced < present) {
    if (header.vectorized)
      throw RecordingError(sizes + ", its header announces " + std::to_string(announced) +
                           ": where a channel begins cannot be told. Correct DataPoints.");
    header_.nrOfTimePoints = announced;
    header_.warnings.push_back(sizes + ", its header announces " + std::to_string(announced) +
                               "; the rest is left out.");
  }
}

void BrainVisionReader::readMarkers(const BrainVisionHeader& header) {
  if (header.markerFile.empty()) return;
  const std::string path = findFile(header.markerFile, ".vmrk");
  if (path.empty()) {
    header_.warnings.push_back("\"" + path_ + "\" names the marker file \"" +
                               cutUtf8(header.markerFile, 200) +
                               "\", which is not there; the recording has no markers without it.");
    return;
  }
  header_.files.push_back(path);
  addBrainVisionMarkers(header_, readTextFile(path, largestMarkerFile, "a BrainVision marker file"), path);
}

void BrainVisionReader::readSamples(int64_t firstSample, int64_t count) {
  const int width = bytesPerSampleOf(samples_);
  bytes_.resize(static_cast<size_t>(count * width));
  if (!data_.seek(firstSample * width) || !data_.read(bytes_.data(), bytes_.size()))
    throw RecordingError("\"" + dataPath_ + "\" cannot be read" +
                         (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string()) +
                         ". Copy it again from where it was made.");
  show(dataPath_, firstSample * width, bytes_);
  if (swapped_) swapByteGroups(bytes_.data(), bytes_.size(), width);
}

template <typename Sample>
void takeEvery(const unsigned char* from, int64_t stride, double step, std::span<double> values) {
  for (double& value : values) {
    Sample sample;
    std::memcpy(&sample, from, sizeof(Sample));
    value = static_cast<double>(sample) * step;
    from += stride * static_cast<int64_t>(sizeof(Sample));
  }
}

void BrainVisionReader::readBlock(int64_t first, int64_t count, std::span<double> values) {
  const int64_t nrOfChannels = header_.nrOfChannels();
  if (!vectorized_) readSamples(first * nrOfChannels, count * nrOfChannels);
  for (int64_t c = 0; c < nrOfChannels; ++c) {
    if (vectorized_) readSamples(c * header_.nrOfTimePoints + first, count);
    const std::span<double> out = values.subspan(static_cast<size_t>(c * count), static_cast<size_t>(count));
    const unsigned char* const from = bytes_.data() + (vectorized_ ? 0 : c * bytesPerSampleOf(samples_));
    const int64_t stride = vectorized_ ? 1 : nrOfChannels;
    const double step = steps_[static_cast<size_t>(c)];
    switch (samples_) {
    case BrainVisionSamples::Int16:
      takeEvery<int16_t>(from, stride, step, out);
      break;
    case BrainVisionSamples::Uint16:
      takeEvery<uint16_t>(from, stride, step, out);
      break;
    case BrainVisionSamples::Int32:
      takeEvery<int32_t>(from, stride, step, out);
      break;
    case BrainVisionSamples::Float32:
      takeEvery<float>(from, stride, step, out);
      break;
    }
  }
}

} // namespace

std::unique_ptr<RecordingReader> openBrainVisionRecording(const std::string& path) {
  return std::make_unique<BrainVisionReader>(path);
}

} // namespace emeg
