#include "files/exchange/BrainVisionWriter.h"

#include "files/exchange/BrainVisionHeader.h"
#include "files/exchange/BrainVisionMarkers.h"
#include "files/exchange/FileExtension.h"
#include "files/exchange/PendingFiles.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CtcFile.h"

namespace emeg {

namespace {

class BrainVisionWriter : public RecordingWriter {
public:
  BrainVisionWriter(const std::string& path, const RecordingHeader& header, const WriteOptions& options)
      : path_(path), stem_(withoutExtension(path)), pending_(options.overwrite) {
    header_ = header;
    temporaryData_ = pending_.add(stem_ + ".eeg");
    temporaryMarkers_ = pending_.add(stem_ + ".vmrk");
    temporaryHeader_ = pending_.add(path);
    files_ = pending_.finalPaths();
    if (!data_.create(temporaryData_)) throw RecordingError(writeFailure(stem_ + ".eeg"));
  }

private:
  void writeBlock(int64_t count, std::span<const double> values) override {
    const size_t nrOfChannels = header_.channels.size();
    const auto length = static_cast<size_t>(count);
    samples_.resize(values.size());
    for (size_t c = 0; c < nrOfChannels; ++c)
      for (size_t t = 0; t < length; ++t)
        samples_[t * nrOfChannels + c] = static_cast<float>(values[c * length + t]);
    if (!hostIsLittleEndian) swapByteGroups(samples_.data(), samples_.size() * sizeof(float), sizeof(float));
    if (!data_.write(samples_.data(), samples_.size() * sizeof(float)))
      throw RecordingError(writeFailure(stem_ + ".eeg"));
  }

  void finishFiles() override {
    if (!data_.close()) throw RecordingError(writeFailure(stem_ + ".eeg"));
    const std::string dataName = fileNameOf(stem_ + ".eeg");
    writeText(temporaryMarkers_, stem_ + ".vmrk", brainVisionMarkerText(header_, dataName, warnings_));
    writeText(temporaryHeader_, path_, brainVisionHeaderText(header_, dataName, fileNameOf(stem_ + ".vmrk")));
    pending_.commit();
  }

  static void writeText(const std::string& path, const std::string& finalPath, const std::string& text) {
    BinaryFile file;
    if (!file.create(path) || !file.write(text.data(), text.size()) || !file.close())
      throw RecordingError(writeFailure(finalPath));
  }

  std::string path_, stem_;
  PendingFiles pending_;
  std::string temporaryData_, temporaryMarkers_, temporaryHeader_;
  BinaryFile data_;
  std::vector<float> samples_;
};

} // namespace

std::unique_ptr<RecordingWriter> createBrainVisionRecording(const std::string& path,
                                                            const RecordingHeader& header,
                                                            const WriteOptions& options) {
  return std::make_unique<BrainVisionWriter>(path, header, options);
}

} // namespace emeg
