#include "app/correct/CorrectedRecording.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace emeg {

namespace {

constexpr const char* newSegment = "New Segment";
constexpr int64_t secondsPerDay = 86400;

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysIn(int month, int year) {
  constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 31;
  return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

StartTime later(StartTime start, double seconds) {
  const auto whole = static_cast<int64_t>(std::floor(seconds));
  const auto micro = static_cast<int64_t>(std::floor((seconds - std::floor(seconds)) * 1e6 + 0.5));
  const int64_t microseconds = start.microsecond + micro;
  int64_t clock = start.hour * 3600 + start.minute * 60 + start.second + whole + microseconds / 1000000;
  start.microsecond = static_cast<int>(microseconds % 1000000);
  for (int64_t day = clock / secondsPerDay; day > 0; --day) {
    if (++start.day <= daysIn(start.month, start.year)) continue;
    start.day = 1;
    if (++start.month <= 12) continue;
    start.month = 1;
    ++start.year;
  }
  clock %= secondsPerDay;
  start.hour = static_cast<int>(clock / 3600);
  start.minute = static_cast<int>(clock / 60 % 60);
  start.second = static_cast<int>(clock % 60);
  return start;
}

/// The recording's own first segment lies in front of the interval: the interval begins a new one.
void beginNewSegment(RecordingHeader& header) {
  const bool hasSegments =
      std::any_of(header.markers.begin(), header.markers.end(),
                  [](const RecordingMarker& marker) { return marker.type == newSegment; });
  if (!hasSegments || !header.start) return;
  const StartTime& start = *header.start;
  RecordingMarker segment;
  segment.type = newSegment;
  segment.date = fmt::format("{:04}{:02}{:02}{:02}{:02}{:02}{:06}", start.year, start.month, start.day,
                             start.hour, start.minute, start.second, start.microsecond);
  header.markers.insert(header.markers.begin(), segment);
}

} // namespace

CorrectedRecording::CorrectedRecording(RecordingReader& input, RecordingReader& corrected,
                                       const CorrectionPlan& plan, std::vector<RecordingMarker> markers)
    : input_(input), corrected_(corrected), plan_(plan) {
  header_ = input.header();
  header_.samplingFrequency = input.header().samplingFrequency / plan.decimationFactor;
  header_.nrOfTimePoints = plan.nrOfOutputTimePoints();
  header_.markers = std::move(markers);
  for (size_t c = 0; c < header_.channels.size(); ++c) {
    // Corrected values are no whole steps of the input any more.
    if (plan.channels.channels[c].passesUntouched)
      hasUntouched_ = true;
    else
      header_.channels[c].stored.reset();
  }
  if (header_.start && plan.firstTimePoint > 0) {
    const double offset = static_cast<double>(plan.firstTimePoint) / input.header().samplingFrequency;
    header_.start = later(*header_.start, offset);
    beginNewSegment(header_);
  }
}

void CorrectedRecording::readBlock(int64_t first, int64_t count, std::span<double> values) {
  const auto length = static_cast<size_t>(count);
  correctedBlock_.resize(length * plan_.channels.corrected.size());
  corrected_.read(first, count, correctedBlock_);
  for (size_t k = 0; k < plan_.channels.corrected.size(); ++k) {
    const auto channel = static_cast<size_t>(plan_.channels.corrected[k]);
    std::copy_n(correctedBlock_.begin() + static_cast<std::ptrdiff_t>(k * length), length,
                values.begin() + static_cast<std::ptrdiff_t>(channel * length));
  }
  if (hasUntouched_) readUntouched(first, length, values);
}

/// The input has decimationFactor times as many time points: they are read in parts.
void CorrectedRecording::readUntouched(int64_t first, size_t length, std::span<double> values) {
  const int64_t step = plan_.decimationFactor;
  const auto partLength =
      static_cast<size_t>(std::max<int64_t>(convenientBlockLength(header_.nrOfChannels()) / step, 1));
  for (size_t start = 0; start < length; start += partLength) {
    const size_t count = std::min(partLength, length - start);
    const size_t inputLength = (count - 1) * static_cast<size_t>(step) + 1;
    inputBlock_.resize(inputLength * header_.channels.size());
    input_.read(plan_.firstTimePoint + (first + static_cast<int64_t>(start)) * step,
                static_cast<int64_t>(inputLength), inputBlock_);
    for (size_t c = 0; c < header_.channels.size(); ++c) {
      if (!plan_.channels.channels[c].passesUntouched) continue;
      for (size_t t = 0; t < count; ++t)
        values[c * length + start + t] = inputBlock_[c * inputLength + t * static_cast<size_t>(step)];
    }
  }
}

void copyRecording(RecordingReader& from, RecordingWriter& to, const std::function<void(double)>& progress) {
  const RecordingHeader& header = from.header();
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<double> values;
  for (int64_t done = 0; done < header.nrOfTimePoints;) {
    const int64_t count = std::min(blockLength, header.nrOfTimePoints - done);
    values.resize(static_cast<size_t>(count) * header.channels.size());
    from.read(done, count, values);
    to.write(count, values);
    done += count;
    progress(static_cast<double>(done) / static_cast<double>(header.nrOfTimePoints));
  }
}

} // namespace emeg
