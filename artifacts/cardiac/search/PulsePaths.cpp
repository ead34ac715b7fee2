#include "artifacts/cardiac/search/PulsePaths.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

void PulsePathSearch::setTolerance(double exponent) {
  pulseToleranceLow_ = std::exp2(-exponent);
  pulseToleranceHigh_ = std::exp2(exponent);
}

/// The first candidate in walking order at this distance or farther; past the last one when there is none.
int32_t PulsePathSearch::firstAtLeast(int32_t candidate, double least, int step) const {
  int32_t j = candidate + step;
  while (j >= 0 && j < candidates_.count() && distance(candidate, j, step) < least) j += step;
  return j;
}

int32_t PulsePathSearch::follow(int32_t candidate, double previousInterval, int depth, int step) {
  pathMarkSum_ = 0;
  pathLength_ = 0;
  if (depth <= 0) return candidate;
  const double nearest = std::max(previousInterval * pulseToleranceLow_, static_cast<double>(shortest_));
  const int32_t position = candidates_.position(candidate);
  const auto toEnd = static_cast<double>(step > 0 ? seriesLength_ - 1 - position : position);
  const double farthest =
      std::min({previousInterval * pulseToleranceHigh_, static_cast<double>(longest_), toEnd});

  const int32_t first = firstAtLeast(candidate, nearest, step);
  if (first < 0 || first >= candidates_.count()) return candidate;
  if (distance(candidate, first, step) > farthest) {
    const int32_t before = first - step; // at worst the candidate itself
    return candidates_.mark(first) < candidates_.mark(before) ? first : before;
  }

  int32_t best = first;
  double bestMarkSum = 0;
  double bestLength = 0;
  double bestAverage = std::numeric_limits<double>::max();
  for (int32_t j = first; j >= 0 && j < candidates_.count(); j += step) {
    const double interval = distance(candidate, j, step);
    if (interval > farthest) break;
    follow(j, interval, depth - 1, step);
    const double markSum = pathMarkSum_ + candidates_.mark(j);
    const double length = pathLength_ + 1;
    if (markSum / length < bestAverage) {
      best = j;
      bestMarkSum = markSum;
      bestLength = length;
      bestAverage = markSum / length;
    }
  }
  pathMarkSum_ = bestMarkSum;
  pathLength_ = bestLength;
  return best;
}

} // namespace emeg
