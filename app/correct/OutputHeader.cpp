#include "app/correct/OutputHeader.h"

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

RecordingHeader outputHeaderOf(const RecordingHeader& input, const CorrectionPlan& plan,
                               std::vector<RecordingMarker> markers) {
  RecordingHeader header = input;
  header.samplingFrequency = plan.outputRate;
  header.nrOfTimePoints = plan.nrOfOutputs;
  header.markers = std::move(markers);
  // Corrected values are no whole steps of the input any more.
  for (const int channel : plan.channels.corrected)
    header.channels[static_cast<size_t>(channel)].stored.reset();
  if (header.start && plan.firstTimePoint > 0) {
    const double offset = static_cast<double>(plan.firstTimePoint) / input.samplingFrequency;
    header.start = later(*header.start, offset);
    beginNewSegment(header);
  }
  return header;
}

} // namespace emeg
