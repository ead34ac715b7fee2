#include "files/exchange/BrainVisionMarkers.h"

#include "files/exchange/BrainVisionText.h"
#include "files/exchange/TextFields.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <optional>

namespace emeg {

namespace {

const char* const newSegment = "New Segment";
constexpr double negligible = 1e-6; // of a sample

bool isMarkerKey(const std::string& key) {
  return key.size() > 2 && equalsIgnoringCase(key.substr(0, 2), "Mk") &&
         std::all_of(key.begin() + 2, key.end(),
                     [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
}

/// "20231231235959123456": year, month, day, hour, minute, second, microsecond.
std::optional<StartTime> startTimeIn(const std::string& date) {
  constexpr std::array<size_t, 7> widths = {4, 2, 2, 2, 2, 2, 6};
  std::array<int, 7> parts{};
  size_t at = 0;
  for (size_t i = 0; i < parts.size(); ++i, at += widths[i - 1]) {
    if (at + widths[i] > date.size()) return std::nullopt;
    const auto number = wholeNumberIn(date.substr(at, widths[i]));
    if (!number || *number < 0) return std::nullopt;
    parts[i] = static_cast<int>(*number);
  }
  const StartTime start = {parts[0], parts[1], parts[2], parts[3], parts[4], parts[5], parts[6]};
  const bool possible = start.year > 0 && start.month >= 1 && start.month <= 12 && start.day >= 1 &&
                        start.day <= 31 && start.hour < 24 && start.minute < 60 && start.second < 60;
  return possible ? std::optional(start) : std::nullopt;
}

std::string dateText(const StartTime& start) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d%02d%02d%02d%02d%02d%06d", start.year, start.month, start.day,
                start.hour, start.minute, start.second, start.microsecond);
  return text.data();
}

/// type,description,position,size,channel[,date]; a missing size is one sample, a missing channel is all.
std::optional<RecordingMarker> markerIn(const std::string& value, int nrOfChannels) {
  const std::vector<std::string> fields = brainVisionFields(value);
  if (fields.size() < 3) return std::nullopt;
  const std::optional<double> position = numberIn(fields[2]);
  if (!position || !std::isfinite(*position)) return std::nullopt;
  RecordingMarker marker;
  marker.type = fields[0];
  marker.description = fields[1];
  marker.onset = *position - 1;
  const double size = fields.size() > 3 ? numberIn(fields[3]).value_or(1) : 1;
  marker.duration = std::isfinite(size) ? std::max(0.0, size) : 1;
  const int64_t channel = fields.size() > 4 ? wholeNumberIn(fields[4]).value_or(0) : 0;
  if (channel >= 1 && channel <= nrOfChannels) marker.channel = static_cast<int>(channel - 1);
  if (fields.size() > 5) marker.date = std::string(trimmed(fields[5]));
  return marker;
}

/// The types that readers of the format expect for "S  1" and "R  1"; other texts are comments.
std::string typeFor(const RecordingMarker& marker) {
  if (!marker.type.empty()) return marker.type;
  const std::string& text = marker.description;
  const size_t digits = text.find_first_not_of(' ', 1);
  const bool numbered = text.size() > 1 && digits != std::string::npos &&
                        text.find_first_not_of("0123456789", digits) == std::string::npos;
  if (numbered && text.front() == 'S') return "Stimulus";
  if (numbered && text.front() == 'R') return "Response";
  return "Comment";
}

std::string line(int64_t number, const RecordingMarker& marker) {
  const auto position = static_cast<int64_t>(std::floor(marker.onset + 0.5)) + 1;
  const auto size = std::max<int64_t>(1, std::llround(marker.duration));
  const int channel = marker.channel == RecordingMarker::allChannels ? 0 : marker.channel + 1;
  std::string text = "Mk";
  text += std::to_string(number) + "=" + brainVisionField(typeFor(marker)) + "," +
          brainVisionField(marker.description) + "," + std::to_string(position) + "," + std::to_string(size) +
          "," + std::to_string(channel);
  if (!marker.date.empty()) text += ',';
  text += brainVisionField(marker.date);
  return text + "\r\n";
}

} // namespace

void addBrainVisionMarkers(RecordingHeader& header, const std::string& text, const std::string& path) {
  int64_t nrOfOdd = 0;
  std::string firstOdd;
  bool inMarkers = false;
  forEachLine(text, [&](std::string_view line) {
    if (const auto section = brainVisionSectionIn(line)) {
      inMarkers = equalsIgnoringCase(*section, "Marker Infos");
      return;
    }
    if (!inMarkers || line.starts_with(';') || trimmed(line).empty()) return;
    std::optional<RecordingMarker> marker;
    const size_t sign = line.find('=');
    if (sign != std::string_view::npos && isMarkerKey(std::string(trimmed(line.substr(0, sign)))))
      marker = markerIn(toUtf8(line.substr(sign + 1)), header.nrOfChannels());
    if (!marker) {
      if (nrOfOdd++ == 0) firstOdd = cutUtf8(toUtf8(line.substr(0, 200)), 60);
      return;
    }
    if (!header.start && marker->type == newSegment && std::abs(marker->onset) < 1)
      header.start = startTimeIn(marker->date);
    header.markers.push_back(std::move(*marker));
  });
  if (nrOfOdd > 0)
    header.warnings.push_back("\"" + path + "\": " + std::to_string(nrOfOdd) +
                              (nrOfOdd == 1 ? " entry is" : " entries are") +
                              " no marker and left out, the first is \"" + firstOdd + "\".");
  const auto nrOfOutside =
      std::count_if(header.markers.begin(), header.markers.end(), [&header](const RecordingMarker& marker) {
        return marker.onset < 0 || marker.onset >= static_cast<double>(header.nrOfTimePoints);
      });
  if (nrOfOutside > 0)
    header.warnings.push_back("\"" + path + "\": " + std::to_string(nrOfOutside) +
                              (nrOfOutside == 1 ? " marker lies" : " markers lie") +
                              " outside the recording.");
  std::stable_sort(header.markers.begin(), header.markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
}

std::string brainVisionMarkerText(const RecordingHeader& header, const std::string& dataFileName,
                                  std::vector<std::string>& warnings) {
  std::string text = "Brain Vision Data Exchange Marker File, Version 1.0\r\n"
                     "\r\n[Common Infos]\r\nCodepage=UTF-8\r\nDataFile=" +
                     brainVisionField(dataFileName) +
                     "\r\n"
                     "\r\n[Marker Infos]\r\n"
                     "; Mk<number>=<type>,<description>,<position in samples, the first is 1>,<size in "
                     "samples>,<channel, 0: all>[,<date>]\r\n"
                     "; Commas in type or description are written as \"\\1\".\r\n";
  int64_t number = 0;
  const bool hasSegment =
      std::any_of(header.markers.begin(), header.markers.end(),
                  [](const RecordingMarker& marker) { return marker.type == newSegment; });
  if (header.start && !hasSegment) {
    RecordingMarker segment;
    segment.type = newSegment;
    segment.date = dateText(*header.start);
    text += line(++number, segment);
  }
  int64_t nrOfMoved = 0;
  for (const RecordingMarker& marker : header.markers) {
    if (std::abs(marker.onset - std::floor(marker.onset + 0.5)) > negligible) ++nrOfMoved;
    text += line(++number, marker);
  }
  if (nrOfMoved > 0)
    warnings.push_back("BrainVision markers stand at samples: " + std::to_string(nrOfMoved) +
                       (nrOfMoved == 1 ? " marker was" : " markers were") + " moved to the nearest sample.");
  return text;
}

} // namespace emeg
