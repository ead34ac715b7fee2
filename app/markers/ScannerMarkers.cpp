#include "app/markers/ScannerMarkers.h"

#include "app/markers/MarkerNames.h"
#include "app/markers/NamedMarkers.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace emeg {

namespace {

constexpr size_t mostAtOnePlace = 3;        // on average: the event's begin and end, or two recorders
constexpr double tolerance = 0.003;         // seconds off the line, or two samples where they are longer
constexpr double longestSlice = 0.3;        // seconds
constexpr double longestVolume = 30;        // seconds, of a sparse sequence
constexpr double leastRegular = 0.8;        // of the markers
constexpr int64_t leastKnown = 3;           // markers of a known name
constexpr int64_t leastUnknown = 20;        // markers that only their interval speaks for
constexpr double longestUnknown = 10;       // seconds; stimuli may come more slowly and as regularly
constexpr double mostMissingUnknown = 0.05; // a stimulus that alternates with others leaves gaps
constexpr int mostRounds = 5;
constexpr size_t mostGuesses = 20; // of which the best are kept
constexpr double mostStepsInStretch = 20;

struct Group {
  std::string type, description;
  bool isWholeType = false; ///< all markers of a type, whatever their descriptions
  std::vector<double> onsets;
};

/// By type and description; and by type alone where one has several, as numbered volumes do.
std::vector<Group> groupsOf(const RecordingHeader& header) {
  std::map<std::pair<std::string, std::string>, std::vector<double>> byName;
  std::map<std::string, std::vector<double>> byType;
  std::map<std::string, std::set<std::string>> descriptions;
  for (const RecordingMarker& marker : header.markers) {
    if (!std::isfinite(marker.onset)) continue;
    byName[{marker.type, marker.description}].push_back(marker.onset);
    byType[marker.type].push_back(marker.onset);
    descriptions[marker.type].insert(marker.description);
  }
  std::vector<Group> groups;
  groups.reserve(byName.size() + byType.size());
  for (auto& [name, onsets] : byName) groups.push_back({name.first, name.second, false, std::move(onsets)});
  for (auto& [type, onsets] : byType)
    if (!type.empty() && descriptions[type].size() > 1) groups.push_back({type, "", true, std::move(onsets)});
  for (Group& group : groups) std::sort(group.onsets.begin(), group.onsets.end());
  return groups;
}

double endOf(const MarkerLine& line) {
  return line.onset + line.interval * static_cast<double>(line.nrOfRepeats - 1);
}

/// Lines through all markers; scans of one recording may differ in their intervals.
std::vector<MarkerLine> linesThrough(std::vector<double> onsets) {
  std::vector<MarkerLine> lines;
  for (int round = 0; round < mostRounds && !onsets.empty(); ++round) {
    const std::vector<MarkerLine> found = fitMarkerLines(onsets, mostStepsInStretch);
    if (found.empty()) break;
    lines.insert(lines.end(), found.begin(), found.end());
    const auto isCovered = [&](double onset) {
      const auto next =
          std::upper_bound(found.begin(), found.end(), onset, [](double value, const MarkerLine& line) {
            return value < line.onset - line.interval / 2;
          });
      return next != found.begin() && onset <= endOf(*std::prev(next)) + std::prev(next)->interval / 2;
    };
    onsets.erase(std::remove_if(onsets.begin(), onsets.end(), isCovered), onsets.end());
  }
  std::sort(lines.begin(), lines.end(),
            [](const MarkerLine& a, const MarkerLine& b) { return a.onset < b.onset; });
  return lines;
}

/// Markers that lie on the lines themselves, not merely near the marker before: heart beats follow each
/// other at similar distances, too, but drift away from any line.
int64_t nrOnLines(const std::vector<double>& onsets, const std::vector<MarkerLine>& lines, double allowed) {
  return std::count_if(onsets.begin(), onsets.end(), [&](double onset) {
    const auto next =
        std::upper_bound(lines.begin(), lines.end(), onset, [](double value, const MarkerLine& line) {
          return value < line.onset - line.interval / 2;
        });
    if (next == lines.begin()) return false;
    const MarkerLine& line = *std::prev(next);
    const double steps = std::round((onset - line.onset) / line.interval);
    return steps < static_cast<double>(line.nrOfRepeats) &&
           std::fabs(onset - line.onset - steps * line.interval) <= allowed;
  });
}

std::vector<double> distancesBetween(const std::vector<double>& onsets) {
  std::vector<double> distances;
  for (size_t i = 1; i < onsets.size(); ++i) distances.push_back(onsets[i] - onsets[i - 1]);
  return distances;
}

/// Slices: what is left out between two of them, but for the distance that most gaps have: the dead time of
/// a volume.
int64_t nrOfMissingSlices(const std::vector<double>& distances, double interval, double allowed) {
  std::vector<double> gaps;
  for (const double distance : distances)
    if (distance > 1.5 * interval && distance < mostStepsInStretch * interval) gaps.push_back(distance);
  if (gaps.empty()) return 0;
  const double usual = upperMedian(gaps);
  const auto isUsual = [&](double gap) { return std::fabs(gap - usual) <= allowed; };
  const auto nrOfUsual = std::count_if(gaps.begin(), gaps.end(), isUsual);
  const bool isDeadTime = nrOfUsual >= 3 && 2 * nrOfUsual >= static_cast<int64_t>(gaps.size());
  double missing = 0;
  for (const double gap : gaps)
    if (!isDeadTime || !isUsual(gap)) missing += std::round(gap / interval) - 1;
  return static_cast<int64_t>(missing);
}

/// What the interval says; nothing when there is none.
std::optional<ScannerMarkers> regularMarkers(const Group& group, MarkerOrigin origin,
                                             double samplingFrequency) {
  const double allowed = std::max(tolerance * samplingFrequency, 2.0);
  const std::vector<double> onsets = withoutDoubles(group.onsets, samplingFrequency);
  const std::vector<MarkerLine> lines = linesThrough(onsets);
  if (lines.empty() || group.onsets.size() > mostAtOnePlace * onsets.size()) return std::nullopt;
  const MarkerLine& longest =
      *std::max_element(lines.begin(), lines.end(), [](const MarkerLine& a, const MarkerLine& b) {
        return a.nrOfMarkers < b.nrOfMarkers;
      });

  ScannerMarkers markers;
  markers.nrOfMarkers = static_cast<int64_t>(group.onsets.size());
  markers.interval = longest.interval / samplingFrequency;
  const bool mayBeSlice = markers.interval < longestSlice && origin != MarkerOrigin::Volume;
  markers.kind = mayBeSlice || origin == MarkerOrigin::Slice ? MarkerKind::Slice : MarkerKind::Volume;
  int64_t nrOfRegular = 0;
  if (markers.kind == MarkerKind::Slice) {
    const std::vector<double> distances = distancesBetween(onsets);
    const double interval = upperMedian(distances);
    markers.interval = interval / samplingFrequency;
    nrOfRegular = 1 + std::count_if(distances.begin(), distances.end(), [&](double distance) {
                    return std::fabs(distance - interval) <= allowed || distance > 1.5 * interval;
                  });
    markers.nrOfMissing = nrOfMissingSlices(distances, interval, allowed);
    markers.nrOfStretches = 1;
  } else {
    nrOfRegular = nrOnLines(onsets, lines, allowed);
    for (const MarkerLine& line : lines) markers.nrOfMissing += line.nrOfMissing;
    markers.nrOfStretches = static_cast<int64_t>(lines.size());
  }
  markers.nrOfStray = markers.nrOfMarkers - nrOfRegular;
  const bool isRegular =
      static_cast<double>(nrOfRegular) >= leastRegular * static_cast<double>(onsets.size());
  return isRegular && markers.interval <= longestVolume ? std::optional(markers) : std::nullopt;
}

bool isLikely(const ScannerMarkers& markers) {
  if (markers.hasKnownName) return markers.nrOfMarkers >= leastKnown;
  return markers.nrOfMarkers >= leastUnknown && markers.interval <= longestUnknown &&
         static_cast<double>(markers.nrOfMissing + markers.nrOfStray) <=
             mostMissingUnknown * static_cast<double>(markers.nrOfMarkers);
}

/// The shortest name that selects this group and nothing else; empty when there is none.
std::string nameSelecting(const Group& group, const RecordingHeader& header) {
  const std::string both = group.type + "/" + group.description;
  const std::vector<std::string> names = {group.description, group.description.empty() ? group.type : both};
  for (const std::string& name : names)
    if (!name.empty() && onsetsOfMarkers(header, name) == group.onsets) return name;
  return "";
}

struct Guess {
  ScannerMarkers markers;
  const Group* group = nullptr;
};

bool isBetter(const Guess& one, const Guess& other) {
  const ScannerMarkers& a = one.markers;
  const ScannerMarkers& b = other.markers;
  if (a.hasKnownName != b.hasKnownName) return a.hasKnownName;
  return a.nrOfMarkers - a.nrOfStray > b.nrOfMarkers - b.nrOfStray;
}

std::vector<Guess> likelyGuesses(const std::vector<Group>& groups, double samplingFrequency) {
  std::vector<Guess> guesses;
  for (const Group& group : groups) {
    if (static_cast<int64_t>(group.onsets.size()) < leastKnown) continue;
    const MarkerOrigin origin = originOfMarker(group.type, group.description);
    const bool isKnown = origin != MarkerOrigin::Unknown;
    if (origin == MarkerOrigin::Other || (group.isWholeType && !isKnown)) continue;
    std::optional<ScannerMarkers> markers = regularMarkers(group, origin, samplingFrequency);
    if (!markers) continue;
    markers->hasKnownName = isKnown;
    if (isLikely(*markers)) guesses.push_back({*markers, &group});
  }
  std::stable_sort(guesses.begin(), guesses.end(), isBetter);
  guesses.erase(guesses.begin() + static_cast<int64_t>(std::min(guesses.size(), mostGuesses)), guesses.end());
  return guesses;
}

} // namespace

std::vector<ScannerMarkers> guessScannerMarkers(const RecordingHeader& header) {
  const std::vector<Group> groups = groupsOf(header);
  std::vector<ScannerMarkers> best;
  for (Guess& guess : likelyGuesses(groups, header.samplingFrequency)) {
    const bool isFirstOfKind = std::none_of(best.begin(), best.end(), [&](const ScannerMarkers& other) {
      return other.kind == guess.markers.kind;
    });
    const bool isKnownEnough = best.empty() || guess.markers.hasKnownName || !best.front().hasKnownName;
    if (!isFirstOfKind || !isKnownEnough) continue;
    guess.markers.name = nameSelecting(*guess.group, header);
    if (!guess.markers.name.empty()) best.push_back(guess.markers);
  }
  return best;
}

} // namespace emeg
