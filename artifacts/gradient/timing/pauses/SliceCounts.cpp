#include "artifacts/gradient/timing/pauses/SliceCounts.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t maxNrOfMeasuredIntervals = 200;

/// Quiet runs seen through the bands; an index outside the list fits none.
class RunPattern {
public:
  RunPattern(const std::vector<QuietRun>& runs, const QuietBands& bands) : runs_(runs), bands_(bands) {}

  bool isSliceGap(int64_t run) const { return fits(run, bands_.slice); }
  bool isVolumeGap(int64_t run) const { return fits(run, bands_.volume); }
  /// What a volume starts with or ends in: a volume gap where there are some, else a slice gap.
  bool isVolumeEdge(int64_t run) const { return bands_.hasVolumeGaps ? isVolumeGap(run) : isSliceGap(run); }

  /// First run that a complete volume follows.
  int64_t firstSlice() const {
    const int64_t count = static_cast<int64_t>(runs_.size());
    for (int64_t i = 0; i < count - 2; ++i)
      if (isVolumeEdge(i) && isSliceGap(i + 1) && isSliceGap(i + 2)) return i;
    return count - 2;
  }

  /// Last run that a complete volume precedes.
  int64_t lastUsable() const {
    int64_t c = static_cast<int64_t>(runs_.size());
    while (c >= 2 && !(isVolumeEdge(c) && isSliceGap(c - 1) && isSliceGap(c - 2))) --c;
    return c;
  }

private:
  bool fits(int64_t run, const LengthBand& band) const {
    return run >= 0 && run < static_cast<int64_t>(runs_.size()) &&
           band.contains(runs_[static_cast<size_t>(run)].length);
  }

  const std::vector<QuietRun>& runs_;
  const QuietBands& bands_;
};

struct MeasuredInterval {
  int64_t run = 0;
  double seconds = 0;
};

std::vector<MeasuredInterval> measureIntervals(const BurstDelay& delays, int64_t firstRun, double fs) {
  std::vector<MeasuredInterval> intervals;
  for (int64_t j = 0; j < maxNrOfMeasuredIntervals; ++j) {
    const double seconds = delays.measureBurstDelay(firstRun + j, firstRun + j + 1) / fs;
    if (std::isnan(seconds)) break;
    intervals.push_back({firstRun + j, seconds});
  }
  return intervals;
}

int32_t inInt32(double value) {
  constexpr double limit = 2147483647.0;
  return static_cast<int32_t>(std::clamp(value, -limit, limit));
}

} // namespace

QuietBands findQuietBands(const std::vector<LengthClass>& classes) {
  QuietBands bands;
  if (classes.empty()) return bands;
  const LengthClass& sliceGap = classes[0];
  bands.slice = LengthBand::around(sliceGap.length);
  for (size_t k = 1; k < classes.size() && !bands.hasVolumeGaps; ++k) {
    const bool longEnough = classes[k].length >= sliceGap.length;
    const bool frequentEnough = sliceGap.count <= 100 * (classes[k].count + 1);
    const bool slicesPrevail =
        static_cast<double>(classes[1].count + 1) * 1.5 < static_cast<double>(sliceGap.count);
    if (longEnough && frequentEnough && slicesPrevail) {
      bands.volume = LengthBand::around(classes[k].length);
      bands.hasVolumeGaps = true;
    }
  }
  return bands;
}

SliceCounts countWithVolumeGaps(const std::vector<QuietRun>& runs, const QuietBands& bands) {
  const RunPattern pattern(runs, bands);
  const int64_t nrOfRuns = static_cast<int64_t>(runs.size());
  int64_t first = pattern.firstSlice();
  const int64_t last = pattern.lastUsable();

  int64_t volumes = 0;
  int64_t slices = 0;
  for (int64_t i = std::max<int64_t>(first, 0); i < last; ++i) {
    if (pattern.isVolumeGap(i)) ++volumes;
    if (pattern.isSliceGap(i)) ++slices;
  }
  if (volumes == 0) return {0, 0, static_cast<int32_t>(std::max<int64_t>(first, 0))};

  const int64_t spv =
      static_cast<int64_t>(std::floor(static_cast<double>(slices) / static_cast<double>(volumes) + 0.5)) + 1;
  // The volume before the first gap and the one behind the last gap have no gap of the right length on their
  // outer side; their slices tell that they are complete.
  if (first - spv >= 0 && pattern.isSliceGap(first - spv + 1) && pattern.isSliceGap(first - spv + 2)) {
    ++volumes;
    first -= spv;
  }
  if (spv + last < nrOfRuns && pattern.isSliceGap(spv + last - 1) && pattern.isSliceGap(spv + last - 2))
    ++volumes;
  return {static_cast<int32_t>(volumes), static_cast<int32_t>(spv), static_cast<int32_t>(first)};
}

SliceCounts countContinuous(const std::vector<QuietRun>& runs, const QuietBands& bands,
                            const BurstDelay& delays, double samplingFrequency, const LogLine& log) {
  const RunPattern pattern(runs, bands);
  const int64_t start = pattern.firstSlice();
  const int64_t last = pattern.lastUsable();
  const SliceCounts notFound{0, 0, static_cast<int32_t>(std::max<int64_t>(start, 0))};
  if (start < 0) return notFound;

  std::vector<MeasuredInterval> intervals = measureIntervals(delays, start, samplingFrequency);
  const int64_t count = static_cast<int64_t>(intervals.size());
  if (count < 2) return notFound;
  std::stable_sort(
      intervals.begin(), intervals.end(),
      [](const MeasuredInterval& x, const MeasuredInterval& y) { return x.seconds < y.seconds; });

  const auto jumpAt = [&](int64_t j) {
    return intervals[static_cast<size_t>(j + 1)].seconds - intervals[static_cast<size_t>(j)].seconds;
  };
  int64_t jump = 0;
  for (int64_t j = 1; j < count - 1; ++j)
    if (jumpAt(j) > jumpAt(jump)) jump = j;
  const auto longer = intervals.begin() + jump + 1;
  const double threshold = (intervals[static_cast<size_t>(jump)].seconds + longer->seconds) / 2;

  int64_t lowest = longer->run;
  int64_t highest = longer->run;
  for (const MeasuredInterval& interval : intervals) {
    if (!(interval.seconds > threshold)) continue;
    logLine(log, "%d / %.10f / %.10f", static_cast<int>(interval.run), interval.seconds, threshold);
  }
  for (auto interval = longer; interval != intervals.end(); ++interval) {
    lowest = std::min(lowest, interval->run);
    highest = std::max(highest, interval->run);
  }

  // A single longer interval does not tell how far apart they are.
  const int64_t nrOfDistances = count - 2 - jump;
  if (nrOfDistances < 1) return notFound;
  const double spv =
      std::floor(static_cast<double>(highest - lowest) / static_cast<double>(nrOfDistances) + 0.5);
  if (spv < 1) return notFound;
  double first = static_cast<double>(lowest) - spv + 2;
  if (first < 0) first += spv;
  const double volumes = std::floor((static_cast<double>(last) - first + 2) / spv);
  return {std::max(inInt32(volumes), 0), inInt32(spv), inInt32(first)};
}

} // namespace emeg
