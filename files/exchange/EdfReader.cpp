#include "files/exchange/EdfReader.h"

#include "files/exchange/ChannelSubset.h"
#include "files/exchange/EdfHandle.h"
#include "files/exchange/EdfSummary.h"
#include "files/exchange/EdfTexts.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace emeg {

namespace {

constexpr double edfTimeUnitsPerSecond = 1e7; // EDFlib counts in 100 ns
constexpr double closeToWhole = 1e-9;

/// Some channels of the file, all of one rate.
class EdfReader : public RecordingReader {
public:
  EdfReader(const std::string& path, const EdfSummary& summary, const std::vector<std::string>& names);

private:
  void readBlock(int64_t first, int64_t count, std::span<double> values) override;
  void chooseSignals(const EdfSummary& summary, const std::vector<std::string>& names);
  void open();
  void describeChannels();
  void readMarkers();

  std::string path_;
  EdfHandle handle_;
  std::unique_ptr<edf_hdr_struct> edf_; // of 200 kB
  std::vector<int> signals_;            ///< EDFlib's index of each channel (annotations are not counted)
  std::vector<int> integers_;
};

std::string listOf(const std::vector<std::string>& names) {
  constexpr size_t mostNames = 10;
  std::string list;
  for (size_t i = 0; i < names.size() && i < mostNames; ++i)
    list += (i == 0 ? "\"" : ", \"") + names[i] + "\"";
  return list + (names.size() > mostNames ? ", ..." : "");
}

EdfReader::EdfReader(const std::string& path, const EdfSummary& summary,
                     const std::vector<std::string>& names)
    : path_(path), edf_(std::make_unique<edf_hdr_struct>()) {
  header_.files = {path};
  chooseSignals(summary, names);
  open();

  const edf_param_struct& first = edf_->signalparam[signals_.front()];
  const double rate = first.smp_in_datarecord / summary.recordDuration;
  header_.samplingFrequency =
      std::abs(rate - std::round(rate)) < closeToWhole * rate ? std::round(rate) : rate;
  header_.nrOfTimePoints = first.smp_in_file;
  const bool plus = edf_->filetype == EDFLIB_FILETYPE_EDFPLUS || edf_->filetype == EDFLIB_FILETYPE_BDFPLUS;
  header_.format = std::string(summary.is24Bit ? "BDF" : "EDF") + (plus ? "+" : "") +
                   (summary.is24Bit ? ", 24-bit integers" : ", 16-bit integers");
  const StartTime start = {edf_->startdate_year,
                           edf_->startdate_month,
                           edf_->startdate_day,
                           edf_->starttime_hour,
                           edf_->starttime_minute,
                           edf_->starttime_second,
                           static_cast<int>(edf_->starttime_subsecond / 10)};
  // The first second that the format can express stands for an unknown date.
  const bool unknown = start.year == 1985 && start.month == 1 && start.day == 1 && start.hour == 0 &&
                       start.minute == 0 && start.second == 0;
  if (!unknown) header_.start = start;
  header_.texts = edfTexts(*edf_);
  describeChannels();
  readMarkers();
}

void EdfReader::chooseSignals(const EdfSummary& summary, const std::vector<std::string>& names) {
  RecordingHeader all;
  all.files = {path_};
  std::vector<int64_t> rates;
  for (const EdfSignalSummary& signal : summary.signals) {
    if (signal.isAnnotations) continue;
    all.channels.emplace_back().name = signal.label;
    rates.push_back(signal.samplesPerRecord);
  }
  if (all.channels.empty())
    throw RecordingError("\"" + path_ + "\" holds annotations only; there are no channels to read.");
  if (names.empty())
    for (int c = 0; c < all.nrOfChannels(); ++c) signals_.push_back(c);
  else
    signals_ = channelsNamed(all, names);

  std::map<int64_t, int> channelsOfRate;
  for (const int s : signals_) ++channelsOfRate[rates[static_cast<size_t>(s)]];
  if (channelsOfRate.size() == 1) return;
  const auto commonest = std::max_element(channelsOfRate.begin(), channelsOfRate.end(),
                                          [](const auto& a, const auto& b) { return a.second < b.second; });
  std::vector<std::string> odd;
  for (const int s : signals_)
    if (rates[static_cast<size_t>(s)] != commonest->first)
      odd.push_back(all.channels[static_cast<size_t>(s)].name);
  throw RecordingError("\"" + path_ + "\": channels differ in their sampling rates; " + listOf(odd) +
                       (odd.size() == 1 ? " has" : " have") + " another one than the " +
                       std::to_string(commonest->second) +
                       " others. Choose channels of one rate with --channels.");
}

void EdfReader::open() {
  const int result = edfopen_file_readonly(path_.c_str(), edf_.get(), EDFLIB_READ_ALL_ANNOTATIONS);
  if (result == 0) {
    handle_ = EdfHandle(edf_->handle);
    return;
  }
  std::string reason =
      "a field of its header has characters or values that the format does not allow, or its "
      "annotations cannot be understood. Write it again with the program that made it";
  if (edf_->filetype == EDFLIB_MAXFILES_REACHED) reason = "too many EDF files are open";
  if (edf_->filetype == EDFLIB_FILE_ALREADY_OPENED) reason = "the file is open already";
  if (edf_->filetype == EDFLIB_MALLOC_ERROR) reason = "there is not enough memory";
  if (edf_->filetype == EDFLIB_FILE_READ_ERROR) reason = "reading it failed";
  throw RecordingError("\"" + path_ + "\" cannot be read: " + reason + ".");
}

void EdfReader::describeChannels() {
  for (const int s : signals_) {
    const edf_param_struct& signal = edf_->signalparam[s];
    RecordingChannel channel;
    channel.name = toUtf8(trimmed(signal.label));
    channel.unit = toUtf8(trimmed(signal.physdimension));
    channel.microvoltsPerUnit = microvoltsIn(channel.unit);
    channel.transducer = toUtf8(trimmed(signal.transducer));
    channel.prefilter = toUtf8(trimmed(signal.prefilter));
    const double scale = channel.isVoltage() ? channel.microvoltsPerUnit : 1;
    StoredIntegers stored;
    stored.smallest = signal.dig_min;
    stored.largest = signal.dig_max;
    stored.step = (signal.phys_max - signal.phys_min) * scale /
                  (static_cast<double>(signal.dig_max) - static_cast<double>(signal.dig_min));
    stored.offset = signal.phys_min * scale - static_cast<double>(signal.dig_min) * stored.step;
    channel.stored = stored;
    const GuessedKind guess = guessChannelKind(channel.name, "", channel.isVoltage());
    channel.kind = guess.kind;
    channel.kindRule = guess.rule;
    header_.channels.push_back(std::move(channel));
  }
}

void EdfReader::readMarkers() {
  edf_annotation_struct annotation{};
  for (int64_t i = 0; i < edf_->annotations_in_file; ++i) {
    if (edf_get_annotation(handle_.get(), static_cast<int>(i), &annotation) != 0) continue;
    RecordingMarker marker;
    marker.description = toUtf8(annotation.annotation);
    marker.onset = static_cast<double>(annotation.onset) / edfTimeUnitsPerSecond * header_.samplingFrequency;
    if (annotation.duration_l > 0)
      marker.duration =
          static_cast<double>(annotation.duration_l) / edfTimeUnitsPerSecond * header_.samplingFrequency;
    header_.markers.push_back(std::move(marker));
  }
  std::stable_sort(header_.markers.begin(), header_.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

void EdfReader::readBlock(int64_t first, int64_t count, std::span<double> values) {
  integers_.resize(static_cast<size_t>(count));
  for (size_t c = 0; c < signals_.size(); ++c) {
    if (edfseek(handle_.get(), signals_[c], first, EDFSEEK_SET) != first ||
        edfread_digital_samples(handle_.get(), signals_[c], static_cast<int>(count), integers_.data()) !=
            count)
      throw RecordingError("\"" + path_ + "\" cannot be read from sample " + std::to_string(first) + " on.");
    const StoredIntegers& stored = *header_.channels[c].stored;
    std::transform(integers_.begin(), integers_.end(), values.begin() + static_cast<int64_t>(c) * count,
                   [&stored](int integer) { return stored.valueOf(integer); });
  }
}

} // namespace

std::unique_ptr<RecordingReader> openEdfRecording(const std::string& path,
                                                  const std::vector<std::string>& channels) {
  const EdfSummary summary = readEdfSummary(path);
  if (summary.isDiscontinuous)
    throw RecordingError("\"" + path +
                         "\": the recording is discontinuous (EDF+D or BDF+D), with gaps that a "
                         "correction cannot bridge. Export its stretches as continuous files.");
  if (!(summary.recordDuration > 0))
    throw RecordingError("\"" + path +
                         "\": the duration of a data record in its header (bytes 244 to 251) is " +
                         std::to_string(summary.recordDuration) + "; it must be positive.");
  if (summary.signals.size() > EDFLIB_MAXSIGNALS)
    throw RecordingError("\"" + path + "\" holds " + std::to_string(summary.signals.size()) +
                         " signals; at most " + std::to_string(EDFLIB_MAXSIGNALS) +
                         " can be read. Split it into files of fewer signals.");
  return std::make_unique<EdfReader>(path, summary, channels);
}

} // namespace emeg
