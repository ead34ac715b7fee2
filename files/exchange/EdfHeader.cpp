#include "files/exchange/EdfHeader.h"

#include "files/exchange/Recording.h"
#include "files/exchange/TextFields.h"
#include "files/exchange/TextFile.h"
#include "files/formats/BinaryFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string_view>

namespace emeg {

namespace {

constexpr size_t fixedHeaderSize = 256;
constexpr size_t bytesPerSignal = 256;
constexpr int64_t mostSignals = 9999; // four digits

// Where the fields of the fixed part stand
constexpr size_t patientAt = 8;
constexpr size_t recordingAt = 88;
constexpr size_t startDateAt = 168;
constexpr size_t startTimeAt = 176;
constexpr size_t reservedAt = 192;
constexpr size_t nrOfRecordsAt = 236;
constexpr size_t recordDurationAt = 244;
constexpr size_t nrOfSignalsAt = 252;

// Widths of the signals' fields, which stand field after field, all signals of one field together
constexpr size_t labelWidth = 16;
constexpr size_t textWidth = 80;
constexpr size_t numberWidth = 8;

class EdfHeaderFile {
public:
  explicit EdfHeaderFile(const std::string& path) : path_(path) {
    if (!file_.openForReading(path))
      throw RecordingError("\"" + path + "\" cannot be read: " + std::strerror(errno) + ".");
    fixed_ = read(fixedHeaderSize);
    nrOfSignals_ = static_cast<size_t>(wholeNumber(fixed_, nrOfSignalsAt, 4, "number of signals"));
    if (nrOfSignals_ < 1 || nrOfSignals_ > mostSignals)
      refuse("the number of signals in its header (bytes 252 to 255) is " + std::to_string(nrOfSignals_) +
             "; at least 1 is needed.");
    signals_ = read(nrOfSignals_ * bytesPerSignal);
  }

  EdfHeader header() {
    EdfHeader result;
    const bool edf = fixed_.starts_with("0       ");
    result.is24Bit = fixed_.starts_with("\xFF"
                                        "BIOSEMI");
    if (!edf && !result.is24Bit)
      refuse("its first 8 bytes are neither EDF's nor BDF's; it is another format.");
    const std::string_view reserved = std::string_view(fixed_).substr(reservedAt, 5);
    result.isPlus = reserved.starts_with("EDF+") || reserved.starts_with("BDF+");
    result.patient = toUtf8(field(fixed_, patientAt, textWidth));
    result.recording = toUtf8(field(fixed_, recordingAt, textWidth));
    result.startDate = toUtf8(field(fixed_, startDateAt, numberWidth));
    result.startTime = toUtf8(field(fixed_, startTimeAt, numberWidth));
    result.nrOfBytes = static_cast<int64_t>(fixedHeaderSize + signals_.size());
    result.isDiscontinuous = reserved == "EDF+D" || reserved == "BDF+D";
    result.nrOfRecords = wholeNumber(fixed_, nrOfRecordsAt, numberWidth, "number of data records");
    result.recordDuration = number(fixed_, recordDurationAt, "duration of a data record");
    readSignals(result);
    checkSize(result);
    return result;
  }

  [[noreturn]] void refuse(const std::string& sentence) const {
    throw RecordingError("\"" + path_ + "\": " + sentence);
  }

private:
  std::string read(size_t nrOfBytes) {
    std::string bytes(nrOfBytes, '\0');
    if (!file_.read(bytes.data(), bytes.size()))
      refuse("the file ends within its header; it is cut off or no EDF or BDF file.");
    return bytes;
  }

  static std::string_view field(const std::string& bytes, size_t at, size_t width) {
    return trimmed(std::string_view(bytes).substr(at, width));
  }

  int64_t wholeNumber(const std::string& bytes, size_t at, size_t width, const std::string& what) const {
    const auto value = wholeNumberIn(field(bytes, at, width));
    if (!value)
      refuse("the " + what + " in its header is \"" + toUtf8(field(bytes, at, width)) + "\", no number.");
    return *value;
  }

  double number(const std::string& bytes, size_t at, const std::string& what) const {
    const auto value = numberIn(field(bytes, at, numberWidth));
    if (!value || !std::isfinite(*value))
      refuse("the " + what + " in its header is \"" + toUtf8(field(bytes, at, numberWidth)) +
             "\", no number.");
    return *value;
  }

  /// Reads one field of all signals and moves behind it.
  template <typename Use>
  void forEachSignal(EdfHeader& result, size_t& at, size_t width, const Use& use) const {
    for (EdfSignal& signal : result.signals) {
      use(signal, at);
      at += width;
    }
  }

  void readSignals(EdfHeader& result) const {
    result.signals.resize(nrOfSignals_);
    const std::string annotations = result.is24Bit ? "BDF Annotations" : "EDF Annotations";
    size_t at = 0;
    forEachSignal(result, at, labelWidth, [&](EdfSignal& signal, size_t place) {
      signal.label = toUtf8(field(signals_, place, labelWidth));
      signal.isAnnotations = result.isPlus && signal.label == annotations;
    });
    forEachSignal(result, at, textWidth, [this](EdfSignal& signal, size_t place) {
      signal.transducer = toUtf8(field(signals_, place, textWidth));
    });
    forEachSignal(result, at, numberWidth, [this](EdfSignal& signal, size_t place) {
      signal.unit = toUtf8(field(signals_, place, numberWidth));
    });
    const auto of = [](const std::string& what, const EdfSignal& signal) {
      return what + " of signal \"" + signal.label + "\"";
    };
    forEachSignal(result, at, numberWidth, [&](EdfSignal& signal, size_t place) {
      signal.physicalMinimum = number(signals_, place, of("physical minimum", signal));
    });
    forEachSignal(result, at, numberWidth, [&](EdfSignal& signal, size_t place) {
      signal.physicalMaximum = number(signals_, place, of("physical maximum", signal));
    });
    forEachSignal(result, at, numberWidth, [&](EdfSignal& signal, size_t place) {
      signal.digitalMinimum = wholeNumber(signals_, place, numberWidth, of("digital minimum", signal));
    });
    forEachSignal(result, at, numberWidth, [&](EdfSignal& signal, size_t place) {
      signal.digitalMaximum = wholeNumber(signals_, place, numberWidth, of("digital maximum", signal));
    });
    forEachSignal(result, at, textWidth, [this](EdfSignal& signal, size_t place) {
      signal.prefilter = toUtf8(field(signals_, place, textWidth));
    });
    forEachSignal(result, at, numberWidth, [&](EdfSignal& signal, size_t place) {
      signal.samplesPerRecord = wholeNumber(signals_, place, numberWidth, of("number of samples", signal));
      if (signal.samplesPerRecord < 1)
        refuse("the " + of("number of samples", signal) + " in a data record is " +
               std::to_string(signal.samplesPerRecord) + "; at least 1 is needed.");
    });
    int64_t byteInRecord = 0;
    for (EdfSignal& signal : result.signals) {
      signal.byteInRecord = byteInRecord;
      byteInRecord += signal.samplesPerRecord * result.bytesPerSample();
      if (signal.isAnnotations) continue;
      if (signal.digitalMinimum >= signal.digitalMaximum || signal.physicalMinimum == signal.physicalMaximum)
        refuse("the " + of("range", signal) +
               " is empty (physical or digital minimum and maximum are the same); correct it in the header.");
    }
  }

  void checkSize(const EdfHeader& result) {
    const int64_t data = file_.size() - static_cast<int64_t>(fixedHeaderSize + signals_.size());
    const int64_t recordSize = std::max<int64_t>(1, result.bytesPerRecord());
    const std::string present = "it holds " + std::to_string(data / recordSize) + " whole data records";
    if (result.nrOfRecords < 1)
      refuse("the number of data records in its header (bytes 236 to 243) is " +
             std::to_string(result.nrOfRecords) + ", " + present +
             ": the recording was not ended properly. Correct that number.");
    if (data / recordSize < result.nrOfRecords)
      refuse(present + ", its header announces " + std::to_string(result.nrOfRecords) +
             ": it is cut off. Copy it again from where it was made, or correct the number of data records.");
    if (data != result.nrOfRecords * recordSize)
      refuse(
          "behind its " + std::to_string(result.nrOfRecords) + " data records stand " +
          std::to_string(data - result.nrOfRecords * recordSize) +
          " bytes that its header does not announce. Correct the number of data records, or cut them off.");
  }

  std::string path_;
  BinaryFile file_;
  std::string fixed_, signals_;
  size_t nrOfSignals_ = 0;
};

} // namespace

int64_t EdfHeader::bytesPerRecord() const {
  int64_t nrOfSamples = 0;
  for (const EdfSignal& signal : signals) nrOfSamples += signal.samplesPerRecord;
  return nrOfSamples * bytesPerSample();
}

EdfHeader readEdfHeader(const std::string& path) {
  return EdfHeaderFile(path).header();
}

} // namespace emeg
