#include "files/exchange/EegLabReader.h"

#include "files/exchange/FileExtension.h"
#include "files/exchange/MatFile.h"
#include "files/exchange/Rehearsal.h"
#include "files/exchange/TextFile.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/CtcFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <optional>

namespace emeg {

namespace {

constexpr int64_t mostChannels = 100000;
const char* const microvolt = "\xC2\xB5V";

class EegLabReader : public RecordingReader {
public:
  explicit EegLabReader(const std::string& path);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
  void readSize();
  void openSamples();
  void openDataFile(const std::string& name);
  void describeChannels();
  void readMarkers();
  double numberField(const std::string& name, const std::string& expected);
  [[noreturn]] void refuse(const std::string& sentence) const {
    throw RecordingError("\"" + path_ + "\": " + sentence);
  }

  std::string path_;
  MatFile mat_;
  int64_t nrOfChannels_ = 0;
  MatValue data_;       ///< samples in the file itself, or
  BinaryFile dataFile_; ///< beside it
  std::string dataPath_;
  std::vector<double> block_;
  std::vector<float> floats_;
};

EegLabReader::EegLabReader(const std::string& path) : path_(path), mat_(path) {
  header_.files = {path};
  mat_.openStruct("EEG");
  if (!mat_.field("srate") || !mat_.field("data"))
    refuse("it holds no EEGLAB data set (a struct EEG with the fields srate and data).");
  readSize();
  openSamples();
  describeChannels();
  readMarkers();
  if (const MatValue comments = mat_.loadedField("comments"))
    if (const auto text = textOf(comments.get()); text && !text->empty())
      header_.texts.push_back({"Comment", *text});
}

double EegLabReader::numberField(const std::string& name, const std::string& expected) {
  const MatValue value = mat_.loadedField(name);
  const auto number = numberOf(value.get());
  if (!number || !std::isfinite(*number)) refuse("EEG." + name + " is missing or no number; " + expected);
  return *number;
}

void EegLabReader::readSize() {
  header_.samplingFrequency = numberField("srate", "the sampling rate in Hz is needed.");
  if (!(header_.samplingFrequency > 0))
    refuse(fmt::format("EEG.srate is {} Hz; it must be positive.", header_.samplingFrequency));
  const double channels = numberField("nbchan", "the number of channels is needed.");
  const double points = numberField("pnts", "the number of samples is needed.");
  if (!(channels >= 1) || channels > static_cast<double>(mostChannels) || !(points >= 1) || points > 1e15)
    refuse(fmt::format("EEG.nbchan is {} and EEG.pnts {}; at least 1 channel and 1 sample are needed.",
                       channels, points));
  const MatValue trialsField = mat_.loadedField("trials");
  const double trials = numberOf(trialsField.get()).value_or(1);
  if (trials > 1)
    refuse(fmt::format(
        "it holds {} epochs; only continuous recordings can be read. Use the data set from before "
        "it was cut into epochs.",
        trials));
  nrOfChannels_ = static_cast<int64_t>(channels);
  header_.nrOfTimePoints = static_cast<int64_t>(points);
}

void EegLabReader::openSamples() {
  data_ = mat_.field("data");
  if (data_->class_type == MAT_C_CHAR) {
    const MatValue name = mat_.loadedField("data");
    data_ = nullptr;
    openDataFile(textOf(name.get()).value_or(""));
    return;
  }
  header_.format = "EEGLAB";
  if (nrOfRows(data_) != nrOfChannels_ || nrOfColumns(data_) != header_.nrOfTimePoints)
    refuse(fmt::format(
        "EEG.data has {} rows and {} columns, EEG.nbchan is {} and EEG.pnts {}: they contradict each "
        "other. Run eeg_checkset in EEGLAB and save it again.",
        nrOfRows(data_), nrOfColumns(data_), nrOfChannels_, header_.nrOfTimePoints));
  if (!mat_.hasRoomFor(data_))
    refuse("EEG.data is larger than the file; it is damaged. Copy it again from where it was made.");
}

void EegLabReader::openDataFile(const std::string& name) {
  header_.format = "EEGLAB, 32-bit floats in a data file";
  dataPath_ = besideFile(path_, fileNameOf(name));
  if (name.empty() || !dataFile_.openForReading(dataPath_)) {
    const std::string renamed = withoutExtension(path_) + ".fdt";
    if (!dataFile_.openForReading(renamed))
      refuse("it names the data file \"" + cutUtf8(name, 200) +
             "\", which is not beside it; put it there, or save the data set again in EEGLAB.");
    header_.warnings.push_back("\"" + path_ + "\" names \"" + cutUtf8(name, 200) +
                               "\", which is not there; \"" + fileNameOf(renamed) + "\" is read instead.");
    dataPath_ = renamed;
  }
  if (extensionOf(dataPath_) == ".dat")
    refuse(
        "its data file is of an old kind (.dat), channel after channel; save the data set again in EEGLAB.");
  header_.files.push_back(dataPath_);
  const int64_t present = dataFile_.size() / (nrOfChannels_ * static_cast<int64_t>(sizeof(float)));
  if (present < header_.nrOfTimePoints)
    throw RecordingError(
        fmt::format("\"{}\" holds {} samples of {} channels, EEG.pnts is {}: it is cut off. Copy "
                    "it again from where it was made.",
                    dataPath_, present, nrOfChannels_, header_.nrOfTimePoints));
}

void EegLabReader::describeChannels() {
  const MatValue locations = mat_.loadedField("chanlocs");
  const int64_t described = locations && locations->class_type == MAT_C_STRUCT ? nrOfElements(locations) : 0;
  if (described != nrOfChannels_)
    header_.warnings.push_back(fmt::format("\"{}\": EEG.chanlocs describes {} channels of {}; the others are "
                                           "numbered.",
                                           path_, described, nrOfChannels_));
  for (int64_t c = 0; c < nrOfChannels_; ++c) {
    RecordingChannel channel;
    if (c < described) {
      channel.name = trimmed(textOrNumberOf(elementField(locations, "labels", c)));
      channel.type = trimmed(textOf(elementField(locations, "type", c)).value_or(""));
    }
    if (channel.name.empty()) channel.name = fmt::format("E{}", c + 1);
    channel.unit = microvolt;
    const GuessedKind guess = guessChannelKind(channel.name, channel.type, true);
    channel.kind = guess.kind;
    channel.kindRule = guess.rule;
    header_.channels.push_back(std::move(channel));
  }
}

void EegLabReader::readMarkers() {
  const MatValue events = mat_.loadedField("event");
  const int64_t nrOfEvents = events && events->class_type == MAT_C_STRUCT ? nrOfElements(events) : 0;
  int64_t nrOfOdd = 0;
  for (int64_t i = 0; i < nrOfEvents; ++i) {
    const auto latency = numberOf(elementField(events, "latency", i));
    if (!latency || !std::isfinite(*latency)) {
      ++nrOfOdd;
      continue;
    }
    RecordingMarker marker;
    marker.description = textOrNumberOf(elementField(events, "type", i));
    marker.onset = *latency - 1;
    const double duration = numberOf(elementField(events, "duration", i)).value_or(0);
    if (std::isfinite(duration) && duration > 0) marker.duration = duration;
    header_.markers.push_back(std::move(marker));
  }
  if (nrOfOdd > 0)
    header_.warnings.push_back(
        fmt::format("\"{}\": {} of {} events have no latency and are left out.", path_, nrOfOdd, nrOfEvents));
  std::stable_sort(header_.markers.begin(), header_.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

void EegLabReader::readBlock(int64_t first, int64_t count, std::span<double> values) {
  const int64_t nrOfValues = nrOfChannels_ * count;
  block_.resize(static_cast<size_t>(nrOfValues));
  if (data_) {
    if (!mat_.readColumns(data_, first, count, block_))
      refuse(fmt::format(
          "EEG.data cannot be read from sample {} on; the file is damaged or holds no real numbers.",
          first + 1));
  } else {
    floats_.resize(block_.size());
    const size_t nrOfBytes = floats_.size() * sizeof(float);
    const int64_t position = first * nrOfChannels_ * static_cast<int64_t>(sizeof(float));
    if (!dataFile_.seek(position) || !dataFile_.read(floats_.data(), nrOfBytes))
      throw RecordingError("\"" + dataPath_ + "\" cannot be read from sample " + std::to_string(first + 1) +
                           " on. Copy it again from where it was made.");
    show(dataPath_, position, {reinterpret_cast<const unsigned char*>(floats_.data()), nrOfBytes});
    if (!hostIsLittleEndian) swapByteGroups(floats_.data(), nrOfBytes, sizeof(float));
    std::copy(floats_.begin(), floats_.end(), block_.begin());
  }
  for (int64_t c = 0; c < nrOfChannels_; ++c)
    for (int64_t t = 0; t < count; ++t)
      values[static_cast<size_t>(c * count + t)] = block_[static_cast<size_t>(t * nrOfChannels_ + c)];
}

} // namespace

std::unique_ptr<RecordingReader> openEegLabRecording(const std::string& path) {
  // matio and HDF5 crash on some damaged files.
  const RehearsalResult trial = rehearse([&path] {
    EegLabReader reader(path);
    const int64_t last = reader.header().nrOfTimePoints - 1;
    std::vector<double> values(reader.header().channels.size());
    reader.read(0, 1, values);
    reader.read(last, 1, values);
  });
  if (!trial.survived)
    throw RecordingError("\"" + path + "\" is damaged so that it cannot be read. Save it again in EEGLAB.");
  if (!trial.error.empty()) throw RecordingError(trial.error);
  return std::make_unique<EegLabReader>(path);
}

} // namespace emeg
