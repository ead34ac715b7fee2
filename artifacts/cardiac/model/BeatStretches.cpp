#include "artifacts/cardiac/model/BeatStretches.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t neighbourhood = 12; // intervals on either side that tell the rhythm
constexpr double epochReach = 0.6;   // of an interval

/// Median of the intervals around interval `index`, without itself where there are others.
double usualInterval(const std::vector<double>& beats, size_t index) {
  const size_t nrOfIntervals = beats.size() - 1;
  const size_t from = index > neighbourhood ? index - neighbourhood : 0;
  const size_t to = std::min(index + neighbourhood + 1, nrOfIntervals);
  std::vector<double> intervals;
  for (size_t i = from; i < to; ++i)
    if (i != index || nrOfIntervals == 1) intervals.push_back(beats[i + 1] - beats[i]);
  const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 2);
  std::nth_element(intervals.begin(), middle, intervals.end());
  return *middle;
}

OuterBeat outerBeat(double usual, double room) {
  const double length = std::max(std::floor(usual), 1.0);
  return {static_cast<int64_t>(length), static_cast<int64_t>(std::min(length * epochReach, room))};
}

} // namespace

std::vector<BeatStretch> splitAtGaps(const std::vector<double>& beats, double gapFactor) {
  std::vector<BeatStretch> stretches;
  const size_t nrOfIntervals = beats.size() - 1;
  const double first = usualInterval(beats, 0);
  BeatStretch stretch;
  stretch.inFront = outerBeat(first, first);
  for (size_t i = 0; i < nrOfIntervals; ++i) {
    const double interval = beats[i + 1] - beats[i];
    const double usual = usualInterval(beats, i);
    if (!(gapFactor > 0) || !(interval > gapFactor * usual)) continue;
    stretch.lastBeat = i;
    stretch.behind = outerBeat(usual, std::floor(interval / 2));
    stretches.push_back(stretch);
    stretch.firstBeat = i + 1;
    stretch.inFront = stretch.behind;
  }
  const double last = usualInterval(beats, nrOfIntervals - 1);
  stretch.lastBeat = nrOfIntervals;
  stretch.behind = outerBeat(last, last);
  stretches.push_back(stretch);
  return stretches;
}

PositionRange modelledSamples(const BeatStretch& stretch, const std::vector<double>& beats, int64_t length) {
  const auto first = static_cast<int64_t>(beats[stretch.firstBeat]);
  const auto last = static_cast<int64_t>(beats[stretch.lastBeat]);
  return {std::clamp<int64_t>(first - stretch.inFront.reach, 0, length),
          std::clamp<int64_t>(last + stretch.behind.reach, 0, length)};
}

} // namespace emeg
