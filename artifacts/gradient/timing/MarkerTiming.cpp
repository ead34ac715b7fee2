#include "artifacts/gradient/timing/MarkerTiming.h"

#include "artifacts/gradient/timing/ChannelPoll.h"
#include "artifacts/gradient/timing/ScanSearch.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double longestPause = 3; // seconds between slice markers of one scan

/// A line may reach half way to its neighbours.
SampleRange limitsOf(const std::vector<MarkerLine>& lines, size_t index, int64_t nrOfSamples) {
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

std::vector<ScanSegment> scansFromVolumes(const ScanSearch& search, std::span<const double> markers,
                                          int32_t nrOfSlicesPerVolume) {
  const std::vector<MarkerLine> lines = fitMarkerLines(markers);
  std::vector<ScanSegment> scans;
  for (size_t i = 0; i < lines.size(); ++i) {
    const SampleRange limits = limitsOf(lines, i, search.nrOfSamples());
    const auto scan = search.scanOfVolumes({lines[i].onset, lines[i].interval}, {0, lines[i].nrOfRepeats - 1},
                                           limits, nrOfSlicesPerVolume);
    if (scan) scans.push_back(*scan);
  }
  return scans;
}

/// The slices' markers say where scans are and how long a slice is; volumes are found between them.
std::vector<ScanSegment> scansFromSlices(const ScanSearch& search, double samplingFrequency,
                                         std::span<const double> markers, int32_t nrOfSlicesPerVolume) {
  std::vector<double> sorted(markers.begin(), markers.end());
  std::erase_if(sorted, [](double marker) { return !std::isfinite(marker); });
  std::sort(sorted.begin(), sorted.end());
  GivenTiming given;
  given.nrOfSlicesPerVolume = nrOfSlicesPerVolume;
  for (const MarkerLine& line : fitMarkerLines(sorted, 1.5)) {
    given.sliceDuration = line.interval / samplingFrequency;
    break;
  }
  if (given.sliceDuration == 0) return {};

  const auto n = static_cast<double>(search.nrOfSamples());
  std::vector<ScanSegment> scans;
  double limit = 0;
  for (size_t first = 0; first < sorted.size();) {
    size_t last = first;
    while (last + 1 < sorted.size() && sorted[last + 1] - sorted[last] < longestPause * samplingFrequency)
      ++last;
    const double begin = std::clamp(sorted[first], 0.0, n);
    const double end = std::clamp(sorted[last] + given.sliceDuration * samplingFrequency, begin, n);
    const double next = last + 1 < sorted.size() ? std::clamp(sorted[last + 1], end, n) : n;
    const auto scan = search.scanIn({static_cast<int64_t>(begin), static_cast<int64_t>(end)},
                                    {static_cast<int64_t>(limit), static_cast<int64_t>(next)}, given);
    if (scan) {
      scans.push_back(*scan);
      limit = std::clamp(scan->end, 0.0, next);
    }
    first = last + 1;
  }
  return scans;
}

} // namespace

std::vector<ScanSegment> scansFromMarkers(std::span<const double> channel, double samplingFrequency,
                                          std::span<const double> markers, MarkerKind kind,
                                          int32_t nrOfSlicesPerVolume) {
  if (!(std::isfinite(samplingFrequency) && samplingFrequency >= 1)) return {};
  const ScanSearch search(channel, samplingFrequency);
  if (kind == MarkerKind::Volume) return scansFromVolumes(search, markers, nrOfSlicesPerVolume);
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
