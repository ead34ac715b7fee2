#include "files/exchange/CtcRecordingReader.h"

#include "files/exchange/FileExtension.h"
#include "files/exchange/ProtocolMarkers.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CcdFile.h"
#include "files/formats/CtcFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <type_traits>

namespace emeg {

namespace {

constexpr int32_t channelAfterChannel = 1;

std::string formatText(const CtcHeader& header) {
  std::string text = "CTC, ";
  if (header.dataType == 1) text += "32-bit floats";
  if (header.dataType == 2) text += "64-bit floats";
  if (header.dataType == 3) text += "16-bit integers";
  return text +
         (header.dataOrganisation == channelAfterChannel ? ", channel after channel" : ", multiplexed");
}

class CtcRecordingReader : public RecordingReader {
public:
  explicit CtcRecordingReader(const std::string& path);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
  void readSamples(int64_t firstSample, int64_t count);
  void checkHeader() const;
  void describeChannels();
  /// The description beside the recording, when there is one that fits.
  std::optional<ChannelDescription> findDescription();
  /// Names one of the recording's files in front of a sentence.
  std::string inFile(const std::string& sentence) const { return "\"" + path_ + "\": " + sentence; }

  std::string path_;
  BinaryFile file_;
  CtcHeader ctc_;
  SampleFormat format_ = SampleFormat::Unsupported;
  std::vector<unsigned char> bytes_;
};

CtcRecordingReader::CtcRecordingReader(const std::string& path) : path_(path) {
  if (!file_.openForReading(path)) throw RecordingError(inFile(std::string(std::strerror(errno)) + "."));
  std::array<unsigned char, ctcHeaderSize> bytes{};
  if (!file_.read(bytes.data(), bytes.size()))
    throw RecordingError(inFile("the file is shorter than the 32 bytes of a CTC header; it is no CTC file."));
  ctc_ = decodeCtcHeader(bytes);
  format_ = inputSampleFormatOf(ctc_.dataType);
  checkHeader();

  const int64_t bytesPerTimePoint = int64_t{ctc_.nrOfChannels} * bytesPerSampleOf(format_);
  const int64_t present = (file_.size() - static_cast<int64_t>(ctcHeaderSize)) / bytesPerTimePoint;
  if (present < ctc_.nrOfTimePoints)
    throw RecordingError(inFile("the file is cut off: its header announces " +
                                std::to_string(ctc_.nrOfTimePoints) + " time points, it has room for " +
                                std::to_string(present) + ". Copy it again from where it was recorded."));

  header_.format = formatText(ctc_);
  header_.samplingFrequency = static_cast<double>(ctc_.samplingFrequency);
  header_.nrOfTimePoints = ctc_.nrOfTimePoints;
  header_.files = {path};
  describeChannels();
}

void CtcRecordingReader::checkHeader() const {
  if (format_ == SampleFormat::Unsupported)
    throw RecordingError(inFile("the sample type in its header (bytes 8 to 11) is " +
                                std::to_string(ctc_.dataType) +
                                "; 1 (float), 2 (double) and 3 (16-bit integer) can be read."));
  if (ctc_.nrOfChannels < 1)
    throw RecordingError(inFile("the number of channels in its header (bytes 16 and 17) is " +
                                std::to_string(ctc_.nrOfChannels) + "; 1 to 32767 are possible."));
  if (ctc_.nrOfTimePoints < 1)
    throw RecordingError(inFile("the number of time points in its header (bytes 20 to 23) is " +
                                std::to_string(ctc_.nrOfTimePoints) + "; at least 1 is needed."));
  if (!(ctc_.samplingFrequency > 0) || !std::isfinite(ctc_.samplingFrequency))
    throw RecordingError(inFile("the sampling frequency in its header (bytes 24 to 27) is " +
                                std::to_string(ctc_.samplingFrequency) + " Hz; it must be positive."));
}

std::optional<ChannelDescription> CtcRecordingReader::findDescription() {
  const std::string path = withoutExtension(path_) + ".ccd";
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return std::nullopt;
  ChannelDescription description;
  if (readCcdFile(path, description) != CcdReadResult::Ok) {
    header_.warnings.push_back("\"" + path + "\" cannot be read; channels have no names without it.");
    return std::nullopt;
  }
  header_.files.push_back(path);
  return description;
}

void CtcRecordingReader::describeChannels() {
  const std::optional<ChannelDescription> description = findDescription();
  const auto nrOfChannels = static_cast<size_t>(ctc_.nrOfChannels);
  // A recording of some of its input's channels keeps the records of all: which ones it holds is not said.
  const bool fits = description && description->channelRecords.size() == nrOfChannels;
  if (description && !fits)
    header_.warnings.push_back("\"" + header_.files.back() + "\" describes " +
                               std::to_string(description->channelRecords.size()) +
                               " channels and the recording has " + std::to_string(nrOfChannels) +
                               ": which names belong to it cannot be told, so they are numbered.");
  for (size_t c = 0; c < nrOfChannels; ++c) {
    RecordingChannel channel;
    channel.name = CcdChannelRecord::defaultName(static_cast<int>(c));
    if (fits) {
      const CcdChannelRecord& record = description->channelRecords[c];
      if (!record.name().empty()) channel.name = record.name();
      channel.good = record.good();
    }
    const GuessedKind guess = guessChannelKind(channel.name, channel.type, true);
    channel.kind = guess.kind;
    channel.kindRule = guess.rule;
    channel.unit = "uV";
    if (format_ == SampleFormat::Int16) channel.stored = StoredIntegers{};
    header_.channels.push_back(std::move(channel));
  }

  // The description's frequency is a double: it gives the digits that the CTC's float has lost.
  if (description) {
    const double exact = description->header.samplingFrequency();
    if (std::isfinite(exact) && std::abs(exact) <= static_cast<double>(std::numeric_limits<float>::max()) &&
        static_cast<float>(exact) == ctc_.samplingFrequency)
      header_.samplingFrequency = exact;
  }
  addProtocolMarkers(header_, path_, description ? description->header.prtFileName() : std::string(),
                     description.has_value());
}

void CtcRecordingReader::readSamples(int64_t firstSample, int64_t count) {
  const int64_t size = bytesPerSampleOf(format_);
  bytes_.resize(static_cast<size_t>(count * size));
  const int64_t position = static_cast<int64_t>(ctcHeaderSize) + firstSample * size;
  if (!file_.seek(position) || !file_.read(bytes_.data(), bytes_.size()))
    throw RecordingError(inFile("reading failed" +
                                (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string()) +
                                ". Copy it again from where it was recorded."));
  show(path_, position, bytes_);
  if (!hostIsLittleEndian) swapByteGroups(bytes_.data(), bytes_.size(), static_cast<int>(size));
}

template <typename Sample>
void takeEvery(const std::vector<unsigned char>& bytes, int64_t start, int64_t stride,
               std::span<double> values) {
  const unsigned char* from = bytes.data() + start * static_cast<int64_t>(sizeof(Sample));
  for (double& value : values) {
    Sample sample;
    std::memcpy(&sample, from, sizeof(Sample));
    value = static_cast<double>(sample);
    from += stride * static_cast<int64_t>(sizeof(Sample));
  }
}

void CtcRecordingReader::readBlock(int64_t first, int64_t count, std::span<double> values) {
  const int64_t nrOfChannels = ctc_.nrOfChannels;
  const bool multiplexed = ctc_.dataOrganisation != channelAfterChannel;
  if (multiplexed) readSamples(first * nrOfChannels, count * nrOfChannels);
  for (int64_t c = 0; c < nrOfChannels; ++c) {
    if (!multiplexed) readSamples(c * ctc_.nrOfTimePoints + first, count);
    const std::span<double> out = values.subspan(static_cast<size_t>(c * count), static_cast<size_t>(count));
    const int64_t start = multiplexed ? c : 0;
    const int64_t stride = multiplexed ? nrOfChannels : 1;
    if (format_ == SampleFormat::Float32) takeEvery<float>(bytes_, start, stride, out);
    if (format_ == SampleFormat::Float64) takeEvery<double>(bytes_, start, stride, out);
    if (format_ == SampleFormat::Int16) takeEvery<int16_t>(bytes_, start, stride, out);
  }
}

} // namespace

std::unique_ptr<RecordingReader> openCtcRecording(const std::string& path) {
  return std::make_unique<CtcRecordingReader>(path);
}

} // namespace emeg
