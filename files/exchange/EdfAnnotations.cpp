#include "files/exchange/EdfAnnotations.h"

#include "files/exchange/Recording.h"
#include "files/exchange/TextFields.h"
#include "files/exchange/TextFile.h"

#include <cmath>
#include <optional>

namespace emeg {

namespace {

constexpr char endOfText = '\x14';
constexpr char beforeDuration = '\x15';
/// Far more than a record needs; keeps a header's wild number from asking for gigabytes.
constexpr int64_t largestSignal = int64_t{16} << 20;

/// "+1.5" or "-0.3": the sign is required.
std::optional<double> onsetIn(std::string_view text) {
  if (!text.starts_with('+') && !text.starts_with('-')) return std::nullopt;
  const auto onset = numberIn(text);
  return onset && std::isfinite(*onset) ? onset : std::nullopt;
}

} // namespace

std::vector<EdfAnnotation> parseEdfAnnotations(std::string_view bytes, int64_t& nrOfOdd) {
  std::vector<EdfAnnotation> annotations;
  while (!bytes.empty()) {
    const size_t end = bytes.find('\0');
    std::string_view list = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (list.empty()) continue;

    const size_t endOfTimes = list.find(endOfText);
    const std::string_view times = list.substr(0, endOfTimes);
    const size_t separator = times.find(beforeDuration);
    const auto onset = onsetIn(times.substr(0, separator));
    if (!onset || endOfTimes == std::string_view::npos) {
      ++nrOfOdd;
      continue;
    }
    double duration = 0;
    if (separator != std::string_view::npos) duration = numberIn(times.substr(separator + 1)).value_or(0);
    list.remove_prefix(endOfTimes + 1);
    if (!std::isfinite(duration) || duration < 0) duration = 0;
    while (!list.empty()) {
      const size_t endOfOne = list.find(endOfText);
      annotations.push_back({*onset, duration, toUtf8(list.substr(0, endOfOne))});
      list.remove_prefix(endOfOne == std::string_view::npos ? list.size() : endOfOne + 1);
    }
  }
  return annotations;
}

EdfAnnotations readEdfAnnotations(BinaryFile& file, const std::string& path, const EdfHeader& header) {
  EdfAnnotations result;
  bool knowsStart = false;
  std::string bytes;
  for (int64_t record = 0; record < header.nrOfRecords; ++record) {
    for (const EdfSignal& signal : header.signals) {
      const int64_t size = signal.samplesPerRecord * header.bytesPerSample();
      if (!signal.isAnnotations) continue;
      if (size > largestSignal)
        throw RecordingError("\"" + path +
                             "\": the number of samples of its annotations in a data record is " +
                             std::to_string(signal.samplesPerRecord) + ", more than can be meant.");
      bytes.resize(static_cast<size_t>(size));
      if (!file.seek(header.nrOfBytes + record * header.bytesPerRecord() + signal.byteInRecord) ||
          !file.read(bytes.data(), bytes.size()))
        throw RecordingError("\"" + path + "\" cannot be read at data record " + std::to_string(record + 1) +
                             ".");
      for (EdfAnnotation& annotation : parseEdfAnnotations(bytes, result.nrOfOdd)) {
        if (!annotation.text.empty())
          result.annotations.push_back(std::move(annotation));
        else if (!knowsStart && record == 0 && annotation.onset >= 0 && annotation.onset < 1)
          result.firstRecordOnset = annotation.onset;
        knowsStart = true;
      }
    }
  }
  for (EdfAnnotation& annotation : result.annotations) annotation.onset -= result.firstRecordOnset;
  return result;
}

} // namespace emeg
