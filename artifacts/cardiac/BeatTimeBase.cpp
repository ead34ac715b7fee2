#include "artifacts/cardiac/BeatTimeBase.h"

#include "dsp/Medians.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double shortestModel = 3;
constexpr double longestModel = 100001;

} // namespace

double BeatTimeBase::start(size_t interval) const {
  return std::floor(pulsePositions[interval]);
}

double BeatTimeBase::length(size_t interval) const {
  return std::trunc(pulseIntervals[interval]);
}

BeatTimeBase makeBeatTimeBase(const std::vector<double>& pulsePositions, int32_t heartPeriod) {
  BeatTimeBase base;
  base.pulsePositions = pulsePositions;
  for (size_t i = 1; i < pulsePositions.size(); ++i)
    base.pulseIntervals.push_back(pulsePositions[i] - pulsePositions[i - 1]);
  const std::vector<double>& intervals = base.pulseIntervals;
  const double median = histogramMedian(intervals.data(), static_cast<int32_t>(intervals.size()));
  const auto [shortest, longest] = std::minmax_element(intervals.begin(), intervals.end());

  const double e = median - *shortest < 0.5 ? 1.0 : (*longest - median) / (median - *shortest) + 1;
  const double length = 2 * std::floor(heartPeriod * e + 0.5) + 1;
  base.medianPulseInterval = median;
  base.modelLength = static_cast<int32_t>(std::clamp(length, shortestModel, longestModel));
  base.warpStep = 1.0 / (base.modelLength - 1);
  base.warpMargin = std::max(0.0, 0.5 * (1 - *shortest / median));
  base.epochHalfLength = static_cast<int32_t>(std::ceil(base.modelLength * 0.6));
  return base;
}

} // namespace emeg
