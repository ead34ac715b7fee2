#include "app/markers/NamedMarkers.h"

#include "app/RunErrors.h"
#include "files/exchange/TextFile.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace emeg {

namespace {

/// A recording may have thousands of different markers; a message names the commonest ones.
constexpr size_t mostNamesInMessage = 20;
constexpr size_t longestNameInMessage = 60; // bytes

constexpr double onePlace = 0.010; // seconds

/// Without blanks at the ends, and with one for every run of them.
std::string withSingleBlanks(const std::string& text) {
  std::string result;
  for (const char c : text)
    if (c != ' ' || (!result.empty() && result.back() != ' ')) result += c;
  if (!result.empty() && result.back() == ' ') result.pop_back();
  return result;
}

template <typename Change>
bool goesBy(const RecordingMarker& marker, const std::string& name, Change change) {
  return change(marker.description) == name || change(marker.type) == name ||
         change(marker.type + "/" + marker.description) == name;
}

template <typename Change>
std::vector<double> onsetsWhere(const RecordingHeader& header, const std::string& name, Change change) {
  std::vector<double> onsets;
  const std::string changed = change(name);
  if (changed.empty()) return onsets;
  for (const RecordingMarker& marker : header.markers)
    if (goesBy(marker, changed, change)) onsets.push_back(marker.onset);
  std::sort(onsets.begin(), onsets.end());
  return onsets;
}

std::string forMessage(const std::string& name) {
  const std::string text = onOneLine(cutUtf8(name, longestNameInMessage));
  return text.size() < name.size() ? text + "..." : text;
}

std::string namesIn(const RecordingHeader& header) {
  std::map<std::string, int64_t> counts;
  for (const RecordingMarker& marker : header.markers)
    ++counts[marker.description.empty() ? marker.type : marker.description];
  std::vector<std::pair<std::string, int64_t>> names(counts.begin(), counts.end());
  std::stable_sort(names.begin(), names.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  std::string text;
  for (size_t i = 0; i < std::min(names.size(), mostNamesInMessage); ++i)
    text += fmt::format("{}\"{}\" ({})", i == 0 ? "" : ", ", forMessage(names[i].first), names[i].second);
  if (names.size() > mostNamesInMessage)
    text += fmt::format(" and {} others", names.size() - mostNamesInMessage);
  return text;
}

} // namespace

std::vector<double> onsetsOfMarkers(const RecordingHeader& header, const std::string& name) {
  std::vector<double> onsets = onsetsWhere(header, name, [](const std::string& text) { return text; });
  if (onsets.empty()) onsets = onsetsWhere(header, name, withSingleBlanks);
  if (!onsets.empty()) return onsets;
  const std::string file = header.files.empty() ? "the recording" : header.files.front();
  if (header.markers.empty())
    throw UnusableInput(fmt::format("\"{}\" names no marker: {} has none at all.", forMessage(name), file));
  throw UnusableInput(fmt::format("\"{}\" names no marker of {}. Its markers are {}; choose one of them.",
                                  forMessage(name), file, namesIn(header)));
}

std::vector<double> withoutDoubles(const std::vector<double>& onsets, double samplingFrequency) {
  std::vector<double> result;
  for (const double onset : onsets)
    if (result.empty() || onset - result.back() > onePlace * samplingFrequency) result.push_back(onset);
  return result;
}

} // namespace emeg
