#include "app/commands/RecordingSummary.h"

#include "app/markers/ScannerMarkers.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

namespace emeg {

namespace {

/// Characters of a UTF-8 text; a wide character counts as one.
size_t widthOf(const std::string& text) {
  return static_cast<size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

/// Rows of texts in columns, two blanks apart, behind two blanks.
class Table {
public:
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  std::string text() const {
    std::vector<size_t> widths;
    for (const auto& row : rows_) {
      widths.resize(std::max(widths.size(), row.size()));
      for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
    }
    std::string text;
    for (const auto& row : rows_) {
      std::string line;
      for (size_t i = 0; i < row.size(); ++i)
        line += fmt::format("  {}{}", row[i], std::string(widths[i] - widthOf(row[i]), ' '));
      line.erase(line.find_last_not_of(' ') + 1);
      text += line + "\n";
    }
    return text;
  }

private:
  std::vector<std::vector<std::string>> rows_;
};

/// A text that a file gave, without what would move the terminal's cursor.
std::string printable(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = ' ';
  return text;
}

std::string hoursMinutesSeconds(double seconds) {
  const auto milliseconds = static_cast<int64_t>(std::floor(seconds * 1000 + 0.5));
  const int64_t whole = milliseconds / 1000;
  return fmt::format("{}:{:02}:{:02}.{:03}", whole / 3600, whole / 60 % 60, whole % 60, milliseconds % 1000);
}

std::string kindsOf(const RecordingHeader& header) {
  std::map<ChannelKind, int> counts;
  for (const RecordingChannel& channel : header.channels) ++counts[channel.kind];
  std::string text;
  for (const auto& [kind, count] : counts)
    text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, nameOf(kind));
  return text;
}

void addChannels(Table& table, const RecordingHeader& header) {
  table.add({"No", "Channel", "Kind", "Unit", "Why this kind", ""});
  for (size_t c = 0; c < header.channels.size(); ++c) {
    const RecordingChannel& channel = header.channels[c];
    table.add({std::to_string(c + 1), printable(channel.name), nameOf(channel.kind), printable(channel.unit),
               printable(channel.kindRule), channel.good ? "" : "marked as bad"});
  }
}

void addMarkers(Table& table, const std::vector<MarkerGroup>& groups) {
  table.add({"Type", "Marker", "Count", "First (s)", "Last (s)"});
  for (const MarkerGroup& group : groups)
    table.add({printable(group.type), printable(group.description), std::to_string(group.count),
               fmt::format("{:.4f}", group.first), fmt::format("{:.4f}", group.last)});
}

const char* optionFor(const ScannerMarkers& markers) {
  return markers.kind == MarkerKind::Volume ? "--volume-markers" : "--slice-markers";
}

/// As a shell takes it.
std::string asArgument(const std::string& text) {
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '/' || c == '_';
  });
  if (isPlain) return text;
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

/// Which markers are likely the scanner's, and how to say so.
std::string guessText(const ScannerMarkers& markers) {
  std::string text = fmt::format("  Probably the scanner's, one per {} (by {}): {} x {} every {:.4f} s",
                                 markers.kind == MarkerKind::Volume ? "volume" : "slice",
                                 markers.hasKnownName ? "name and interval" : "their interval",
                                 markers.nrOfMarkers, printable(markers.name), markers.interval);
  if (markers.nrOfStretches > 1) text += fmt::format(" in {} stretches", markers.nrOfStretches);
  text += fmt::format(", {} missing", markers.nrOfMissing);
  if (markers.nrOfStray > 0) text += fmt::format(", {} out of step", markers.nrOfStray);
  return fmt::format("{}\n    emeg correct FILE {} {}\n", text, optionFor(markers),
                     printable(asArgument(markers.name)));
}

} // namespace

std::vector<MarkerGroup> groupMarkers(const RecordingHeader& header) {
  std::vector<MarkerGroup> groups;
  std::map<std::pair<std::string, std::string>, size_t> indices;
  for (const RecordingMarker& marker : header.markers) {
    const auto [place, isNew] = indices.try_emplace({marker.type, marker.description}, groups.size());
    const double onset = marker.onset / header.samplingFrequency;
    if (isNew) groups.push_back({marker.type, marker.description, 0, onset, onset});
    MarkerGroup& group = groups[place->second];
    ++group.count;
    group.last = onset;
  }
  return groups;
}

std::string dateAndTime(const StartTime& start) {
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:06}", start.year, start.month, start.day,
                     start.hour, start.minute, start.second, start.microsecond);
}

std::string summaryText(const RecordingHeader& header) {
  Table facts;
  facts.add({"Format", header.format});
  for (size_t i = 0; i < header.files.size(); ++i) facts.add({i == 0 ? "Files" : "", header.files[i]});
  facts.add({"Length", fmt::format("{} ({} time points)", hoursMinutesSeconds(header.seconds()),
                                   header.nrOfTimePoints)});
  facts.add({"Rate", fmt::format("{} Hz", header.samplingFrequency)});
  if (header.start) facts.add({"Start", dateAndTime(*header.start)});
  facts.add({"Channels", fmt::format("{}: {}", header.nrOfChannels(), kindsOf(header))});
  for (const RecordingText& text : header.texts)
    facts.add({printable(text.name), printable(text.text.substr(0, text.text.find('\n')))});
  const std::vector<MarkerGroup> groups = groupMarkers(header);
  facts.add({"Markers", groups.empty() ? "none" : std::to_string(header.markers.size())});

  Table channels;
  addChannels(channels, header);
  std::string text = fmt::format("{}\n{}", facts.text(), channels.text());
  if (!groups.empty()) {
    Table markers;
    addMarkers(markers, groups);
    text += fmt::format("\n{}", markers.text());
    const std::vector<ScannerMarkers> guesses = guessScannerMarkers(header);
    if (!guesses.empty()) text += "\n";
    for (const ScannerMarkers& guess : guesses) text += guessText(guess);
  }
  return text;
}

std::string summaryJson(const RecordingHeader& header) {
  using Json = nlohmann::ordered_json;
  Json json;
  json["format"] = header.format;
  json["files"] = header.files;
  json["samplingFrequencyHz"] = header.samplingFrequency;
  json["nrOfTimePoints"] = header.nrOfTimePoints;
  json["seconds"] = header.seconds();
  json["start"] = header.start ? Json(dateAndTime(*header.start)) : Json(nullptr);
  json["channels"] = Json::array();
  for (const RecordingChannel& channel : header.channels)
    json["channels"].push_back({{"name", channel.name},
                                {"kind", nameOf(channel.kind)},
                                {"kindRule", channel.kindRule},
                                {"unit", channel.unit},
                                {"good", channel.good}});
  json["markers"] = Json::array();
  for (const MarkerGroup& group : groupMarkers(header))
    json["markers"].push_back({{"type", group.type},
                               {"description", group.description},
                               {"count", group.count},
                               {"firstSeconds", group.first},
                               {"lastSeconds", group.last}});
  json["scannerMarkers"] = Json::array();
  for (const ScannerMarkers& guess : guessScannerMarkers(header))
    json["scannerMarkers"].push_back({{"name", guess.name},
                                      {"per", guess.kind == MarkerKind::Volume ? "volume" : "slice"},
                                      {"hasKnownName", guess.hasKnownName},
                                      {"count", guess.nrOfMarkers},
                                      {"intervalSeconds", guess.interval},
                                      {"missing", guess.nrOfMissing},
                                      {"outOfStep", guess.nrOfStray},
                                      {"stretches", guess.nrOfStretches},
                                      {"option", optionFor(guess)}});
  json["texts"] = Json::array();
  for (const RecordingText& text : header.texts)
    json["texts"].push_back({{"name", text.name}, {"text", text.text}});
  json["warnings"] = header.warnings;
  // A file name need not be UTF-8.
  return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace emeg
