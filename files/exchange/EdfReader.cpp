#include "files/exchange/EdfReader.h"

#include "files/exchange/ChannelSubset.h"
#include "files/exchange/EdfAnnotations.h"
#include "files/exchange/EdfHeader.h"
#include "files/exchange/EdfTexts.h"
#include "files/formats/BinaryFile.h"
#include "files/formats/LittleEndian.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>

namespace emeg {

namespace {

constexpr double closeToWhole = 1e-9;
constexpr int64_t largestWholeRecord = int64_t{1} << 24; // bytes; of larger ones the stretches are read

/// Some channels of the file, all of one rate.
class EdfReader : public RecordingReader {
public:
  EdfReader(const std::string& path, EdfHeader edf, const std::vector<std::string>& names);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
  /// The samples of one signal within one data record from `first` on.
  void readStretch(const EdfSignal& signal, int64_t record, int64_t first, std::span<double> values,
                   const StoredIntegers& stored);
  void readBytes(int64_t position, size_t count, int64_t record);
  void readRecord(int64_t record);
  void chooseSignals(const std::vector<std::string>& names);
  void describeChannels();
  void readMarkers();

  std::string path_;
  EdfHeader edf_;
  BinaryFile file_;
  std::vector<size_t> signals_; ///< index of each channel among the file's signals
  std::vector<unsigned char> bytes_;
  int64_t recordInBytes_ = -1; ///< the data record that they hold as a whole
};

std::string listOf(const std::vector<std::string>& names) {
  constexpr size_t mostNames = 10;
  std::string list;
  for (size_t i = 0; i < names.size() && i < mostNames; ++i)
    list += (i == 0 ? "\"" : ", \"") + names[i] + "\"";
  return list + (names.size() > mostNames ? ", ..." : "");
}

EdfReader::EdfReader(const std::string& path, EdfHeader edf, const std::vector<std::string>& names)
    : path_(path), edf_(std::move(edf)) {
  header_.files = {path};
  if (!file_.openForReading(path))
    throw RecordingError("\"" + path + "\" cannot be read: " + std::strerror(errno) + ".");
  chooseSignals(names);

  const int64_t perRecord = edf_.signals[signals_.front()].samplesPerRecord;
  const double rate = static_cast<double>(perRecord) / edf_.recordDuration;
  header_.samplingFrequency =
      std::abs(rate - std::round(rate)) < closeToWhole * rate ? std::round(rate) : rate;
  header_.nrOfTimePoints = edf_.nrOfRecords * perRecord;
  header_.format = std::string(edf_.is24Bit ? "BDF" : "EDF") + (edf_.isPlus ? "+" : "") +
                   (edf_.is24Bit ? ", 24-bit integers" : ", 16-bit integers");
  header_.start = edfStart(edf_);
  header_.texts = edfTexts(edf_);
  describeChannels();
  readMarkers();
}

void EdfReader::chooseSignals(const std::vector<std::string>& names) {
  RecordingHeader all;
  all.files = {path_};
  std::vector<size_t> indices;
  for (size_t s = 0; s < edf_.signals.size(); ++s) {
    if (edf_.signals[s].isAnnotations) continue;
    all.channels.emplace_back().name = edf_.signals[s].label;
    indices.push_back(s);
  }
  if (all.channels.empty())
    throw RecordingError("\"" + path_ + "\" holds annotations only; there are no channels to read.");
  if (names.empty()) signals_ = indices;
  for (const int c : channelsNamed(all, names)) signals_.push_back(indices[static_cast<size_t>(c)]);

  std::map<int64_t, int> channelsOfRate;
  for (const size_t s : signals_) ++channelsOfRate[edf_.signals[s].samplesPerRecord];
  if (channelsOfRate.size() == 1) return;
  const auto commonest = std::max_element(channelsOfRate.begin(), channelsOfRate.end(),
                                          [](const auto& a, const auto& b) { return a.second < b.second; });
  std::vector<std::string> odd;
  for (const size_t s : signals_)
    if (edf_.signals[s].samplesPerRecord != commonest->first) odd.push_back(edf_.signals[s].label);
  throw RecordingError("\"" + path_ + "\": channels differ in their sampling rates; " + listOf(odd) +
                       (odd.size() == 1 ? " has" : " have") + " another one than the " +
                       std::to_string(commonest->second) +
                       " others. Choose channels of one rate with --channels.");
}

void EdfReader::describeChannels() {
  for (const size_t s : signals_) {
    const EdfSignal& signal = edf_.signals[s];
    RecordingChannel channel;
    channel.name = signal.label;
    channel.unit = signal.unit;
    channel.microvoltsPerUnit = microvoltsIn(channel.unit);
    channel.transducer = signal.transducer;
    channel.prefilter = signal.prefilter;
    const double scale = channel.isVoltage() ? channel.microvoltsPerUnit : 1;
    StoredIntegers stored;
    stored.smallest = signal.digitalMinimum;
    stored.largest = signal.digitalMaximum;
    const auto lowest = static_cast<double>(signal.digitalMinimum);
    stored.step = (signal.physicalMaximum - signal.physicalMinimum) * scale /
                  (static_cast<double>(signal.digitalMaximum) - lowest);
    stored.offset = signal.physicalMinimum * scale - lowest * stored.step;
    channel.stored = stored;
    const GuessedKind guess = guessChannelKind(channel.name, "", channel.isVoltage());
    channel.kind = guess.kind;
    channel.kindRule = guess.rule;
    header_.channels.push_back(std::move(channel));
  }
}

void EdfReader::readMarkers() {
  const EdfAnnotations found = readEdfAnnotations(file_, path_, edf_);
  for (const EdfAnnotation& annotation : found.annotations) {
    RecordingMarker marker;
    marker.description = annotation.text;
    marker.onset = annotation.onset * header_.samplingFrequency;
    marker.duration = annotation.duration * header_.samplingFrequency;
    header_.markers.push_back(std::move(marker));
  }
  if (header_.start) header_.start->microsecond = static_cast<int>(std::lround(found.firstRecordOnset * 1e6));
  if (found.nrOfOdd > 0)
    header_.warnings.push_back("\"" + path_ + "\": " + std::to_string(found.nrOfOdd) +
                               " annotations cannot be understood and are left out.");
  std::stable_sort(header_.markers.begin(), header_.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

/// Two's complement, the lowest byte first.
int64_t integerAt(const unsigned char* bytes, bool is24Bit) {
  if (!is24Bit) return loadLittleEndian<int16_t>(bytes);
  const int32_t value = bytes[0] | bytes[1] << 8 | bytes[2] << 16;
  constexpr int32_t sign = 1 << 23;
  return (value ^ sign) - sign;
}

void EdfReader::readBytes(int64_t position, size_t count, int64_t record) {
  bytes_.resize(count);
  if (!file_.seek(position) || !file_.read(bytes_.data(), count))
    throw RecordingError("\"" + path_ + "\" cannot be read at data record " + std::to_string(record + 1) +
                         ". Copy it again from where it was made.");
  show(path_, position, bytes_);
}

/// Whole, so that the file is read from front to back whatever the signals' order is.
void EdfReader::readRecord(int64_t record) {
  if (recordInBytes_ == record) return;
  recordInBytes_ = -1;
  readBytes(edf_.nrOfBytes + record * edf_.bytesPerRecord(), static_cast<size_t>(edf_.bytesPerRecord()),
            record);
  recordInBytes_ = record;
}

void EdfReader::readStretch(const EdfSignal& signal, int64_t record, int64_t first, std::span<double> values,
                            const StoredIntegers& stored) {
  const int width = edf_.bytesPerSample();
  int64_t inRecord = signal.byteInRecord + first * width;
  if (edf_.bytesPerRecord() <= largestWholeRecord) {
    readRecord(record);
  } else {
    readBytes(edf_.nrOfBytes + record * edf_.bytesPerRecord() + inRecord,
              values.size() * static_cast<size_t>(width), record);
    inRecord = 0;
  }
  const unsigned char* from = bytes_.data() + inRecord;
  for (double& value : values) {
    value = stored.valueOf(integerAt(from, edf_.is24Bit));
    from += width;
  }
}

void EdfReader::readBlock(int64_t first, int64_t count, std::span<double> values) {
  const int64_t perRecord = edf_.signals[signals_.front()].samplesPerRecord;
  for (int64_t done = 0; done < count;) {
    const int64_t record = (first + done) / perRecord;
    const int64_t start = (first + done) % perRecord;
    const int64_t length = std::min(perRecord - start, count - done);
    for (size_t c = 0; c < signals_.size(); ++c)
      readStretch(edf_.signals[signals_[c]], record, start,
                  values.subspan(c * static_cast<size_t>(count) + static_cast<size_t>(done),
                                 static_cast<size_t>(length)),
                  *header_.channels[c].stored);
    done += length;
  }
}

} // namespace

std::unique_ptr<RecordingReader> openEdfRecording(const std::string& path,
                                                  const std::vector<std::string>& channels) {
  EdfHeader edf = readEdfHeader(path);
  if (edf.isDiscontinuous)
    throw RecordingError("\"" + path +
                         "\": the recording is discontinuous (EDF+D or BDF+D), with gaps that a "
                         "correction cannot bridge. Export its stretches as continuous files.");
  if (!(edf.recordDuration > 0))
    throw RecordingError("\"" + path +
                         "\": the duration of a data record in its header (bytes 244 to 251) is " +
                         std::to_string(edf.recordDuration) + "; it must be positive.");
  return std::make_unique<EdfReader>(path, std::move(edf), channels);
}

} // namespace emeg
