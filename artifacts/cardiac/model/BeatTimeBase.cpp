#include "artifacts/cardiac/model/BeatTimeBase.h"

#include "dsp/Medians.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double shortestModel = 3;
constexpr double longestModel = 100001;
constexpr size_t usualOfTen = 9; // the interval that nine of ten do not exceed

void setModelLength(BeatTimeBase& base, double length) {
  base.modelLength = static_cast<int32_t>(std::clamp(length, shortestModel, longestModel));
  base.warpStep = 1.0 / (base.modelLength - 1);
  base.epochHalfLength = static_cast<int32_t>(std::ceil(base.modelLength * 0.6));
}

/// All but the positions, from intervals between beats.
void fitToIntervals(BeatTimeBase& base, const std::vector<double>& intervals, int32_t heartPeriod) {
  const double median = histogramMedian(intervals.data(), static_cast<int32_t>(intervals.size()));
  const auto [shortest, longest] = std::minmax_element(intervals.begin(), intervals.end());
  const double e = median - *shortest < 0.5 ? 1.0 : (*longest - median) / (median - *shortest) + 1;
  base.medianPulseInterval = median;
  base.warpMargin = std::max(0.0, 0.5 * (1 - *shortest / median));
  setModelLength(base, 2 * std::floor(heartPeriod * e + 0.5) + 1);
}

double usualInterval(std::vector<double> intervals) {
  const auto place =
      intervals.begin() + static_cast<std::ptrdiff_t>((intervals.size() - 1) * usualOfTen / 10);
  std::nth_element(intervals.begin(), place, intervals.end());
  return *place;
}

void addInterval(BeatTimeBase& base, double start, double length, IntervalKind kind) {
  base.pulsePositions.push_back(start);
  base.pulseIntervals.push_back(length);
  base.kinds.push_back(kind);
}

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
  fitToIntervals(base, base.pulseIntervals, heartPeriod);
  return base;
}

BeatTimeBase makeStretchTimeBase(const std::vector<double>& beats, const std::vector<BeatStretch>& stretches,
                                 int32_t heartPeriod, bool followsUsualBeat) {
  BeatTimeBase base;
  for (const BeatStretch& stretch : stretches) {
    const auto lengthInFront = static_cast<double>(stretch.inFront.length);
    addInterval(base, beats[stretch.firstBeat] - lengthInFront, lengthInFront, IntervalKind::InFrontOfBeats);
    for (size_t i = stretch.firstBeat; i < stretch.lastBeat; ++i)
      addInterval(base, beats[i], beats[i + 1] - beats[i], IntervalKind::BetweenBeats);
    addInterval(base, beats[stretch.lastBeat], static_cast<double>(stretch.behind.length),
                IntervalKind::BehindBeats);
  }
  std::vector<double> intervals = withoutOuterIntervals(base).pulseIntervals;
  if (intervals.empty()) intervals = base.pulseIntervals; // every beat stands alone
  fitToIntervals(base, intervals, heartPeriod);
  if (followsUsualBeat) setModelLength(base, 2 * std::floor(usualInterval(intervals)) + 1);
  return base;
}

BeatTimeBase withoutOuterIntervals(const BeatTimeBase& base) {
  if (base.kinds.empty()) return base;
  BeatTimeBase between = base;
  between.pulsePositions.clear();
  between.pulseIntervals.clear();
  between.kinds.clear();
  for (size_t i = 0; i < base.nrOfIntervals(); ++i) {
    if (base.kinds[i] != IntervalKind::BetweenBeats) continue;
    between.pulsePositions.push_back(base.pulsePositions[i]);
    between.pulseIntervals.push_back(base.pulseIntervals[i]);
  }
  return between;
}

} // namespace emeg
