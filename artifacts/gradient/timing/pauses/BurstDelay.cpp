#include "artifacts/gradient/timing/pauses/BurstDelay.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

double BurstDelay::splineMismatch(int64_t start, double position, int64_t length) const {
  const double whole = std::floor(position);
  const double f = position - whole;
  const int64_t k = static_cast<int64_t>(whole);
  double sum = 0;
  for (int64_t j = 0; j < length; ++j) {
    const double difference = signal_.y[start + j] - signal_.value(k + j, f);
    sum += difference * difference;
  }
  return sum / static_cast<double>(length);
}

int64_t BurstDelay::endOfRun(int64_t index) const {
  return index < static_cast<int64_t>(runs_.size()) ? runs_[static_cast<size_t>(index)].end()
                                                    : signal_.nrOfSamples;
}

double BurstDelay::measureBurstDelay(int64_t a, int64_t b) const {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  if (a < 0 || b < 0) return none;

  const double width = alignHalfWidth_;
  const int64_t onsetA = endOfRun(a);
  const int64_t onsetB = endOfRun(b);
  const int64_t nextA = endOfRun(a + 1);
  const int64_t nextB = std::min(endOfRun(b + 1), signal_.nrOfSamples - alignHalfWidth_);
  const int64_t length = std::min(nextA - onsetA, nextB - onsetB);
  if (length < 1) return none;

  // Shifts that would leave the signal never win; the refinement can step past the coarse search's bounds.
  const auto costAt = [&](double offset) {
    const double position = static_cast<double>(onsetB) + offset;
    const bool inside =
        position >= 0 && std::floor(position) <= static_cast<double>(signal_.nrOfSamples - length);
    return inside ? splineMismatch(onsetA, position, length) : std::numeric_limits<double>::infinity();
  };

  double step = 0.2 * width;
  double best = -width;
  double bestCost = costAt(best);
  for (double offset = -width + step; offset <= width; offset += step) {
    const double cost = costAt(offset);
    if (cost < bestCost) {
      bestCost = cost;
      best = offset;
    }
  }

  for (step /= 2; step > width * 1e-6; step /= 2) {
    const double costBelow = costAt(best - step);
    const double costAbove = costAt(best + step);
    if (costBelow < bestCost && costBelow < costAbove) {
      bestCost = costBelow;
      best -= step;
    } else if (costAbove < bestCost && costAbove < costBelow) {
      bestCost = costAbove;
      best += step;
    }
  }
  return static_cast<double>(onsetB) + best - static_cast<double>(onsetA);
}

} // namespace emeg
