#include "artifacts/gradient/timing/markers/MarkerTiming.h"

#include "artifacts/gradient/timing/volumes/ChannelPoll.h"
#include "artifacts/gradient/timing/volumes/ScanSearch.h"
#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double longestPause = 3;   // seconds between slice markers of one scan
constexpr double longestVolume = 12; // seconds between volume markers of one scan
constexpr size_t leastMarkersInScan = 3;

/// A line may reach half way to its neighbours.
PositionRange limitsOf(const std::vector<MarkerLine>& lines, size_t index, int64_t nrOfSamples) {
  const auto endOf = [](const MarkerLine& line) {
    return line.onset + static_cast<double>(line.nrOfRepeats) * line.interval;
  };
  const auto between = [&](const MarkerLine& a, const MarkerLine& b) {
    const double middle = (endOf(a) + b.onset) / 2;
    return static_cast<int64_t>(std::clamp(middle, 0.0, static_cast<double>(nrOfSamples)));
  };
  return {index == 0 ? 0 : between(lines[index - 1], lines[index]),
          index + 1 == lines.size() ? nrOfSamples : between(lines[index], lines[index + 1])};
}

/// Samples; the median over the stretches between dead times and missing markers, the longer of them first.
/// 0: no slices.
double sliceDurationOf(const std::vector<double>& sorted) {
  std::vector<MarkerLine> lines = fitMarkerLines(sorted, 1.5);
  if (lines.empty()) return 0;
  std::sort(lines.begin(), lines.end(),
            [](const MarkerLine& a, const MarkerLine& b) { return a.nrOfMarkers > b.nrOfMarkers; });
  lines.resize(std::max<size_t>(1, lines.size() / 2));
  std::vector<double> intervals;
  intervals.reserve(lines.size());
  for (const MarkerLine& line : lines) intervals.push_back(line.interval);
  return upperMedianReordering(intervals);
}

std::vector<double> usableMarkers(std::span<const double> markers, int64_t nrOfSamples) {
  std::vector<double> sorted;
  for (const double marker : markers)
    if (marker >= 0 && marker < static_cast<double>(nrOfSamples)) sorted.push_back(marker);
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

/// Where markers follow each other without a pause, from the first one to `behind` samples behind the last.
std::vector<PositionRange> markedStretches(const std::vector<double>& sorted, double pause, double behind,
                                           int64_t nrOfSamples) {
  std::vector<PositionRange> stretches;
  for (size_t first = 0; first < sorted.size();) {
    size_t last = first;
    while (last + 1 < sorted.size() && sorted[last + 1] - sorted[last] < pause) ++last;
    const auto end = static_cast<int64_t>(std::ceil(sorted[last] + behind));
    stretches.push_back({static_cast<int64_t>(sorted[first]), std::min(end, nrOfSamples)});
    first = last + 1;
  }
  return stretches;
}

bool liesIn(const std::vector<ScanSegment>& scans, double sample) {
  return std::any_of(scans.begin(), scans.end(), [&](const ScanSegment& scan) {
    return sample > scan.begin - scan.volumeDuration && sample < scan.end + scan.volumeDuration;
  });
}

/// As far as a scan between others may reach.
PositionRange limitsBetween(const std::vector<ScanSegment>& scans, double sample, int64_t nrOfSamples) {
  PositionRange limits{0, nrOfSamples};
  for (const ScanSegment& scan : scans) {
    if (scan.end <= sample) limits.begin = std::max(limits.begin, static_cast<int64_t>(scan.end));
    if (scan.begin >= sample) limits.end = std::min(limits.end, static_cast<int64_t>(scan.begin));
  }
  return limits;
}

/// Two or three volumes of which a marker is missing make no line; their scans are found blindly around the
/// markers that are there, which give the onset.
void addScansAroundOtherMarkers(const ScanSearch& search, double samplingFrequency,
                                const std::vector<double>& sorted, int32_t nrOfSlicesPerVolume,
                                std::vector<ScanSegment>& scans) {
  std::vector<double> open;
  for (const double marker : sorted)
    if (!liesIn(scans, marker)) open.push_back(marker);
  const int64_t n = search.nrOfSamples();
  const double pause = longestVolume * samplingFrequency;
  for (const PositionRange& marked : markedStretches(open, pause, 0, n)) {
    if (marked.length() < 2) continue; // a single marker tells no volume
    const auto first = static_cast<double>(marked.begin);
    const PositionRange limits = limitsBetween(scans, first, n);
    // The last marker stands before a whole volume, the first may be missing: one volume or two of them.
    const int64_t reach = 5 * marked.length() / 2;
    const PositionRange around{std::max(limits.begin, marked.begin - reach),
                               std::min(limits.end, marked.end + reach)};
    GivenTiming given;
    given.nrOfSlicesPerVolume = nrOfSlicesPerVolume;
    given.firstOnset = first / samplingFrequency;
    const auto scan = search.scanIn(search.busyPartOf(around), limits, given);
    if (scan && liesIn({*scan}, first)) scans.push_back(*scan);
  }
  std::sort(scans.begin(), scans.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
}

std::vector<ScanSegment> scansFromVolumes(const ScanSearch& search, double samplingFrequency,
                                          std::span<const double> markers, int32_t nrOfSlicesPerVolume) {
  const std::vector<double> sorted = usableMarkers(markers, search.nrOfSamples());
  const std::vector<MarkerLine> lines = fitMarkerLines(sorted);
  std::vector<ScanSegment> scans;
  bool isEveryLineAScan = true;
  for (size_t i = 0; i < lines.size(); ++i) {
    const PositionRange limits = limitsOf(lines, i, search.nrOfSamples());
    const auto scan = search.scanOfVolumes({lines[i].onset, lines[i].interval}, {0, lines[i].nrOfRepeats - 1},
                                           limits, nrOfSlicesPerVolume);
    if (scan) scans.push_back(*scan);
    isEveryLineAScan = isEveryLineAScan && scan;
  }
  // Markers at equal distances between which nothing repeats are no volumes.
  if (isEveryLineAScan)
    addScansAroundOtherMarkers(search, samplingFrequency, sorted, nrOfSlicesPerVolume, scans);
  return scans;
}

/// Onsets of slices lie at the markers (and their constant delay): the volumes move there, by less than half
/// a slice.
void moveToMarkers(ScanSegment& scan, const std::vector<double>& sorted) {
  std::vector<double> distances;
  for (const double marker : sorted) {
    if (marker < scan.begin || marker > scan.end) continue;
    const double inVolume =
        std::fmod(std::fmod(marker - scan.firstVolumeOnset, scan.volumeDuration) + scan.volumeDuration,
                  scan.volumeDuration);
    const double slices = inVolume / scan.sliceDuration;
    if (slices > scan.nrOfSlicesPerVolume - 0.5) continue; // before the next volume's first slice
    distances.push_back((slices - std::round(slices)) * scan.sliceDuration);
  }
  if (distances.size() < leastMarkersInScan) return;
  // Around the fullest place, as distances wrap around at half a slice.
  const double slice = scan.sliceDuration;
  const auto from = [&](double distance, double place) {
    return distance - place - std::round((distance - place) / slice) * slice;
  };
  std::sort(distances.begin(), distances.end());
  double place = distances[distances.size() / 2];
  for (int pass = 0; pass < 3; ++pass) {
    std::vector<double> around;
    around.reserve(distances.size());
    for (const double distance : distances) around.push_back(from(distance, place));
    place += upperMedianReordering(around);
  }
  scan.firstVolumeOnset += from(place, 0);
}

/// The slices' markers say where scans are and how long a slice is; volumes are found between them.
std::vector<ScanSegment> scansFromSlices(const ScanSearch& search, double samplingFrequency,
                                         std::span<const double> markers, int32_t nrOfSlicesPerVolume) {
  const int64_t n = search.nrOfSamples();
  const std::vector<double> sorted = usableMarkers(markers, n);
  GivenTiming given;
  given.nrOfSlicesPerVolume = nrOfSlicesPerVolume;
  given.sliceDuration = sliceDurationOf(sorted) / samplingFrequency;
  if (given.sliceDuration == 0) return {};

  const std::vector<PositionRange> stretches =
      markedStretches(sorted, longestPause * samplingFrequency, given.sliceDuration * samplingFrequency, n);
  std::vector<ScanSegment> scans;
  double limit = 0;
  for (size_t i = 0; i < stretches.size(); ++i) {
    const int64_t next = i + 1 < stretches.size() ? stretches[i + 1].begin : n;
    auto scan = search.scanIn(stretches[i], {static_cast<int64_t>(limit), next}, given);
    if (!scan) continue;
    moveToMarkers(*scan, sorted);
    scans.push_back(*scan);
    limit = std::clamp(scan->end, 0.0, static_cast<double>(next));
  }
  return scans;
}

} // namespace

std::vector<ScanSegment> scansFromMarkers(std::span<const double> channel, double samplingFrequency,
                                          std::span<const double> markers, MarkerKind kind,
                                          int32_t nrOfSlicesPerVolume) {
  if (!(std::isfinite(samplingFrequency) && samplingFrequency >= 1)) return {};
  const ScanSearch search(channel, samplingFrequency);
  if (kind == MarkerKind::Volume)
    return scansFromVolumes(search, samplingFrequency, markers, nrOfSlicesPerVolume);
  return scansFromSlices(search, samplingFrequency, markers, nrOfSlicesPerVolume);
}

std::vector<ScanSegment> scansFromMarkersInChannels(const ChannelReader& read, int nrOfChannels,
                                                    double samplingFrequency, std::span<const double> markers,
                                                    MarkerKind kind, int32_t nrOfSlicesPerVolume,
                                                    int largestNrOfChannels) {
  return voteOnScans(
      scansOfChannels(read, nrOfChannels, largestNrOfChannels, [&](std::span<const double> channel) {
        return scansFromMarkers(channel, samplingFrequency, markers, kind, nrOfSlicesPerVolume);
      }));
}

} // namespace emeg
