#include "files/exchange/EdfWriter.h"

#include "files/exchange/EdfHandle.h"
#include "files/exchange/EdfHeader.h"
#include "files/exchange/EdfLayout.h"
#include "files/exchange/EdfNames.h"
#include "files/exchange/EdfTexts.h"
#include "files/exchange/FileExtension.h"
#include "files/exchange/PendingFiles.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace emeg {

namespace {

constexpr size_t longestAnnotation = 40;
constexpr double annotationUnitsPerSecond = 1e4;
constexpr double relativeTolerance = 1e-9;

bool is24BitName(const std::string& path) {
  return extensionOf(path) == ".bdf";
}

class EdfWriter : public RecordingWriter {
public:
  EdfWriter(const std::string& path, const RecordingHeader& header, const WriteOptions& options);

private:
  void writeBlock(int64_t count, std::span<const double> values) override;
  void finishFiles() override;
  void chooseScales(const WriteOptions& options);
  void open();
  void setChannels();
  void setStart();
  void writeMarkers();
  void writeRecord();
  void checkCompleteness() const;
  void correctNumbers() const;
  int integerOf(size_t channel, double value);
  std::string inFile(const std::string& reason) const {
    return "\"" + path_ + "\" cannot be written: " + reason;
  }

  std::string path_;
  bool is24Bit_;
  EdfRecordLayout layout_;
  std::vector<EdfScale> scales_;
  std::vector<bool> keepsIntegers_; ///< per channel: the integers of its source come back
  PendingFiles pending_;
  std::string temporary_;
  EdfHandle handle_;
  std::vector<int> record_; ///< channel after channel
  int64_t nrOfTimePointsInRecord_ = 0;
  int64_t nrOfNotNumbers_ = 0;
};

EdfWriter::EdfWriter(const std::string& path, const RecordingHeader& header, const WriteOptions& options)
    : path_(path), is24Bit_(is24BitName(path)), pending_(options.overwrite) {
  header_ = header;
  const auto layout = chooseEdfRecords(header.samplingFrequency, header.nrOfTimePoints, header.nrOfChannels(),
                                       static_cast<int64_t>(header.markers.size()), is24Bit_);
  if (!layout)
    throw RecordingError(inFile(std::to_string(header.nrOfChannels()) + " channels at " +
                                std::to_string(header.samplingFrequency) + " Hz with " +
                                std::to_string(header.markers.size()) +
                                " markers do not fit into its data records; write .vhdr instead."));
  layout_ = *layout;
  if (header.nrOfChannels() + layout_.nrOfAnnotationSignals > EDFLIB_MAXSIGNALS)
    throw RecordingError(inFile("it holds " + std::to_string(EDFLIB_MAXSIGNALS) +
                                " signals, of which the markers take " +
                                std::to_string(layout_.nrOfAnnotationSignals) + ", not " +
                                std::to_string(header.nrOfChannels()) + " channels; write .vhdr instead."));
  chooseScales(options);
  temporary_ = pending_.add(path);
  files_ = pending_.finalPaths();
  open();
  setChannels();
  setStart();
  setEdfTexts(handle_.get(), header.texts, warnings_);
  record_.resize(static_cast<size_t>(layout_.samplesPerRecord) * header_.channels.size());
}

void EdfWriter::chooseScales(const WriteOptions& options) {
  for (size_t c = 0; c < header_.channels.size(); ++c) {
    const RecordingChannel& channel = header_.channels[c];
    auto scale = edfScaleOfStored(channel, is24Bit_);
    keepsIntegers_.push_back(scale.has_value());
    if (!scale && !options.ranges.empty()) scale = edfScaleFor(options.ranges[c], channel, is24Bit_);
    if (!scale && options.ranges.empty())
      throw std::invalid_argument("channel " + channel.name + " needs a range: its values are no " +
                                  (is24Bit_ ? "24" : "16") + "-bit integers");
    if (!scale)
      throw RecordingError(inFile("eight characters do not hold the range of channel \"" + channel.name +
                                  "\" (" + std::to_string(options.ranges[c].smallest) + " to " +
                                  std::to_string(options.ranges[c].largest) + "); write .vhdr instead."));
    scales_.push_back(*scale);
  }
}

void EdfWriter::open() {
  const int type = is24Bit_ ? EDFLIB_FILETYPE_BDFPLUS : EDFLIB_FILETYPE_EDFPLUS;
  const int handle = edfopen_file_writeonly(temporary_.c_str(), type, header_.nrOfChannels());
  if (handle == EDFLIB_MAXFILES_REACHED) throw RecordingError(inFile("too many EDF files are open."));
  if (handle < 0) throw RecordingError(writeFailure(path_));
  handle_ = EdfHandle(handle);
}

void EdfWriter::setChannels() {
  const int handle = handle_.get();
  const std::vector<std::string> labels = edfLabels(header_, warnings_);
  bool done = edf_set_datarecord_duration(handle, layout_.durationIn10us) == 0 &&
              edf_set_number_of_annotation_signals(handle, layout_.nrOfAnnotationSignals) == 0;
  for (int c = 0; c < header_.nrOfChannels(); ++c) {
    const RecordingChannel& channel = header_.channels[static_cast<size_t>(c)];
    const EdfScale& scale = scales_[static_cast<size_t>(c)];
    done = done && edf_set_samplefrequency(handle, c, layout_.samplesPerRecord) == 0 &&
           edf_set_physical_minimum(handle, c, scale.physicalMinimum) == 0 &&
           edf_set_physical_maximum(handle, c, scale.physicalMaximum) == 0 &&
           edf_set_digital_minimum(handle, c, scale.digitalMinimum) == 0 &&
           edf_set_digital_maximum(handle, c, scale.digitalMaximum) == 0 &&
           edf_set_label(handle, c, labels[static_cast<size_t>(c)].c_str()) == 0 &&
           edf_set_physical_dimension(handle, c, edfUnit(channel).c_str()) == 0 &&
           edf_set_transducer(handle, c, edfText(channel.transducer).c_str()) == 0 &&
           edf_set_prefilter(handle, c, edfText(channel.prefilter).c_str()) == 0;
  }
  if (!done) throw RecordingError(inFile("EDFlib refuses the description of its channels."));
  if (layout_.nrOfPaddedTimePoints > 0)
    warnings_.push_back("EDF and BDF hold whole data records: the last one was filled up with " +
                        std::to_string(layout_.nrOfPaddedTimePoints) +
                        " repetitions of the last time point, without a meaning.");
  if (std::abs(layout_.samplingFrequency() / header_.samplingFrequency - 1) > relativeTolerance)
    warnings_.push_back(
        "EDF and BDF express a record's duration in steps of 10 us: the sampling frequency is " +
        std::to_string(layout_.samplingFrequency()) + " Hz instead of " +
        std::to_string(header_.samplingFrequency) + " Hz.");
}

void EdfWriter::setStart() {
  // An unknown date: the first one that the format can express.
  StartTime start = header_.start.value_or(StartTime{1985, 1, 1, 0, 0, 0, 0});
  if (start.year < 1985 || start.year > 2084) {
    warnings_.push_back("EDF and BDF hold dates from 1985 to 2084: the recording's date is lost.");
    start = {1985, 1, 1, 0, 0, 0, 0};
  }
  const bool done = edf_set_startdatetime(handle_.get(), start.year, start.month, start.day, start.hour,
                                          start.minute, start.second) == 0;
  constexpr int unitsOf100usIn100ns = 1000;
  const int units = start.microsecond / 100;
  if (!done || (units > 0 && edf_set_subsecond_starttime(handle_.get(), units * unitsOf100usIn100ns) != 0))
    warnings_.push_back("the recording's date is none that EDF and BDF hold, it is lost.");
}

int EdfWriter::integerOf(size_t c, double value) {
  const EdfScale& scale = scales_[c];
  const RecordingChannel& channel = header_.channels[c];
  if (!std::isfinite(value)) {
    ++nrOfNotNumbers_;
    return std::clamp(0, scale.digitalMinimum, scale.digitalMaximum);
  }
  double integer = 0;
  if (keepsIntegers_[c]) {
    integer = (value - channel.stored->offset) / channel.stored->step;
  } else {
    const double inUnits = channel.isVoltage() ? value / channel.microvoltsPerUnit : value;
    integer = (inUnits - scale.physicalMinimum) / scale.step() + scale.digitalMinimum;
  }
  integer = std::floor(integer + 0.5);
  if (integer < scale.digitalMinimum || integer > scale.digitalMaximum)
    throw RecordingError(inFile("channel \"" + channel.name + "\" has the value " + std::to_string(value) +
                                ", outside the range that was announced for it (" +
                                std::to_string(scale.physicalMinimum) + " to " +
                                std::to_string(scale.physicalMaximum) + " " + edfUnit(channel) + ")."));
  return static_cast<int>(integer);
}

void EdfWriter::writeBlock(int64_t count, std::span<const double> values) {
  const int64_t perRecord = layout_.samplesPerRecord;
  for (int64_t done = 0; done < count;) {
    const int64_t length = std::min(count - done, perRecord - nrOfTimePointsInRecord_);
    for (size_t c = 0; c < header_.channels.size(); ++c) {
      const auto from = values.begin() + static_cast<int64_t>(c) * count + done;
      std::transform(from, from + length,
                     record_.begin() + static_cast<int64_t>(c) * perRecord + nrOfTimePointsInRecord_,
                     [this, c](double value) { return integerOf(c, value); });
    }
    done += length;
    nrOfTimePointsInRecord_ += length;
    if (nrOfTimePointsInRecord_ == perRecord) writeRecord();
  }
}

void EdfWriter::writeRecord() {
  errno = 0;
  if (edf_blockwrite_digital_samples(handle_.get(), record_.data()) != 0)
    throw RecordingError(writeFailure(path_));
  nrOfTimePointsInRecord_ = 0;
}

void EdfWriter::writeMarkers() {
  int64_t nrOfCut = 0;
  int64_t nrOfEarly = 0;
  // The file's own rate: a time is that of the sample at which the marker stands.
  const double unitsPerSample = annotationUnitsPerSecond / layout_.samplingFrequency();
  for (const RecordingMarker& marker : header_.markers) {
    std::string text = marker.description.empty() ? marker.type : marker.description;
    if (text.empty()) text = "Marker";
    text = onOneLine(text);
    if (text.size() > longestAnnotation) ++nrOfCut;
    if (marker.onset < 0) ++nrOfEarly;
    const auto onset = std::llround(std::max(0.0, marker.onset) * unitsPerSample);
    const auto duration = std::llround(marker.duration * unitsPerSample);
    if (edfwrite_annotation_utf8(handle_.get(), onset, duration > 0 ? duration : -1,
                                 cutUtf8(text, longestAnnotation).c_str()) != 0)
      throw RecordingError(inFile("EDFlib refuses the marker \"" + text + "\"."));
  }
  if (nrOfCut > 0)
    warnings_.push_back("EDF and BDF hold 40 bytes of a marker's text: " + std::to_string(nrOfCut) +
                        (nrOfCut == 1 ? " text was cut." : " texts were cut."));
  if (nrOfEarly > 0)
    warnings_.push_back("EDF and BDF hold no markers before the start: " + std::to_string(nrOfEarly) +
                        (nrOfEarly == 1 ? " marker was" : " markers were") + " moved to it.");
}

/// EDFlib does not notice when the disk is full.
void EdfWriter::checkCompleteness() const {
  constexpr int64_t headerBytesPerSignal = 256;
  std::error_code problem;
  const auto size = static_cast<int64_t>(std::filesystem::file_size(temporary_, problem));
  const int64_t nrOfSignals = int64_t{header_.nrOfChannels()} + layout_.nrOfAnnotationSignals;
  const auto samplesPerRecord = static_cast<int64_t>(record_.size());
  const int64_t least =
      (1 + nrOfSignals) * headerBytesPerSignal + layout_.nrOfRecords * samplesPerRecord * (is24Bit_ ? 3 : 2);
  errno = ENOSPC;
  if (problem || size < least) throw RecordingError(writeFailure(path_));
  if (readEdfHeader(temporary_).nrOfRecords != layout_.nrOfRecords)
    throw RecordingError(inFile("EDFlib did not write all data records."));
}

/// EDFlib cuts decimals off where it should round: -1234.57 becomes -1234.56, a record of 1.001 s one of
/// 1.000999 s. The integers were computed with the exact numbers, which these fields have room for.
void EdfWriter::correctNumbers() const {
  constexpr int64_t fixedHeaderSize = 256;
  constexpr int64_t recordDurationAt = 244;
  constexpr int64_t numberWidth = 8;
  constexpr int64_t bytesBeforeMinimum = 16 + 80 + 8; // label, transducer, unit
  const int64_t nrOfSignals = header_.nrOfChannels() + layout_.nrOfAnnotationSignals;
  const int64_t minimaAt = fixedHeaderSize + nrOfSignals * bytesBeforeMinimum;
  const int64_t maximaAt = minimaAt + nrOfSignals * numberWidth;

  std::fstream file(temporary_, std::ios::binary | std::ios::in | std::ios::out);
  const auto put = [&file](int64_t at, double number) {
    std::string text = eightCharacterText(number);
    text.resize(static_cast<size_t>(numberWidth), ' ');
    file.seekp(at);
    file.write(text.data(), numberWidth);
  };
  put(recordDurationAt, layout_.recordDuration());
  for (size_t c = 0; c < scales_.size(); ++c) {
    put(minimaAt + static_cast<int64_t>(c) * numberWidth, scales_[c].physicalMinimum);
    put(maximaAt + static_cast<int64_t>(c) * numberWidth, scales_[c].physicalMaximum);
  }
  file.close();
  if (!file) throw RecordingError(writeFailure(path_));
}

void EdfWriter::finishFiles() {
  if (nrOfTimePointsInRecord_ > 0) {
    const int64_t perRecord = layout_.samplesPerRecord;
    for (int64_t c = 0; c < header_.nrOfChannels(); ++c) {
      const auto end = record_.begin() + c * perRecord + nrOfTimePointsInRecord_;
      std::fill(end, record_.begin() + (c + 1) * perRecord, *(end - 1));
    }
    writeRecord();
  }
  writeMarkers();
  errno = 0;
  if (!handle_.close()) throw RecordingError(writeFailure(path_));
  checkCompleteness();
  correctNumbers();
  if (nrOfNotNumbers_ > 0)
    warnings_.push_back("EDF and BDF hold integers: " + std::to_string(nrOfNotNumbers_) +
                        " samples that are no finite numbers were written as the integer next to 0.");
  pending_.commit();
}

} // namespace

std::unique_ptr<RecordingWriter> createEdfRecording(const std::string& path, const RecordingHeader& header,
                                                    const WriteOptions& options) {
  return std::make_unique<EdfWriter>(path, header, options);
}

bool edfNeedsRanges(const RecordingHeader& header, bool is24Bit) {
  return std::any_of(
      header.channels.begin(), header.channels.end(),
      [is24Bit](const RecordingChannel& channel) { return !edfScaleOfStored(channel, is24Bit); });
}

} // namespace emeg
