#include "artifacts/gradient/timing/volumes/BusyStretches.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double activityWindow = 0.05; // seconds
constexpr double quietPercentile = 0.02;
constexpr double busyPercentile = 0.98;
constexpr double contrastOfScans = 3;   // busy to quiet; below, there is no quiet
constexpr double deepestQuiet = 1e-3;   // of the busy level
constexpr size_t mostPartsOfVolume = 3; // labelling, preparation, readout

/// How many stretches from the first one on repeat themselves after so many parts of a volume; 1 when fewer
/// than three volumes do.
size_t lengthOfRow(const std::vector<PositionRange>& stretches, size_t first, size_t parts,
                   double samplingFrequency) {
  // Each begin and end is known to within a window.
  const double tolerance = 2 * std::ceil(activityWindow * samplingFrequency);
  const auto areEquallyFar = [&](int64_t a, int64_t b, int64_t c) {
    return std::fabs(static_cast<double>((c - b) - (b - a))) <= tolerance;
  };
  size_t count = 0;
  for (size_t k = first; k + 2 * parts < stretches.size(); ++k) {
    const PositionRange &one = stretches[k], &two = stretches[k + parts], &three = stretches[k + 2 * parts];
    if (!areEquallyFar(one.begin, two.begin, three.begin) && !areEquallyFar(one.end, two.end, three.end))
      break;
    count = k + 2 * parts + 1 - first;
  }
  return std::max<size_t>(count, 1);
}

} // namespace

std::vector<PositionRange> busyStretches(std::span<const double> sharpened, double samplingFrequency,
                                         double longestGap) {
  const auto window = static_cast<int64_t>(std::max(1.0, activityWindow * samplingFrequency));
  const auto n = static_cast<int64_t>(sharpened.size());
  std::vector<double> activity;
  for (int64_t begin = 0; begin < n; begin += window) {
    const int64_t end = std::min(begin + window, n);
    double sum = 0;
    for (int64_t i = begin; i < end; ++i) sum += std::fabs(sharpened[static_cast<size_t>(i)]);
    activity.push_back(sum / static_cast<double>(end - begin));
  }
  if (activity.empty()) return {};
  const double busy = lowerPercentile(activity, busyPercentile);
  if (!(busy > 0)) return {};
  const double quiet = std::max(lowerPercentile(activity, quietPercentile), deepestQuiet * busy);
  const double threshold = busy / quiet < contrastOfScans ? 0 : std::sqrt(busy * quiet);

  std::vector<PositionRange> stretches;
  for (size_t k = 0; k < activity.size(); ++k) {
    if (activity[k] < threshold) continue;
    const int64_t begin = static_cast<int64_t>(k) * window;
    const int64_t end = std::min(begin + window, n);
    if (!stretches.empty() &&
        static_cast<double>(begin - stretches.back().end) <= longestGap * samplingFrequency)
      stretches.back().end = end;
    else
      stretches.push_back({begin, end});
  }
  return stretches;
}

std::vector<std::vector<PositionRange>> possibleVolumes(const std::vector<PositionRange>& stretches,
                                                        double samplingFrequency) {
  std::vector<std::vector<PositionRange>> groups;
  for (size_t first = 0; first < stretches.size();) {
    size_t count = 1;
    for (size_t parts = 1; parts <= mostPartsOfVolume; ++parts)
      count = std::max(count, lengthOfRow(stretches, first, parts, samplingFrequency));
    const auto begin = stretches.begin() + static_cast<int64_t>(first);
    groups.emplace_back(begin, begin + static_cast<int64_t>(count));
    first += count;
  }
  return groups;
}

} // namespace emeg
