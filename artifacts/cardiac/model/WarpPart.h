#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/WarpEquation.h"

#include <algorithm>
#include <cmath>

namespace emeg {

/// One side of the bend of the warp, in one interval. Its samples count from the interval's start in front of
/// the bend, from its end behind it.
struct WarpPart {
  double bend;       ///< 3 x (share - warpMargin)
  double share;      ///< of the common time base: a in front of the bend, 1 - a behind it
  double samples;    ///< of the interval on this side
  double medianBend; ///< bend in samples of an interval of the median length

  WarpPart(double part, const BeatTimeBase& base, double interval)
      : bend(3 * (part - base.warpMargin)), share(part),
        samples((interval - base.medianPulseInterval) * 0.5 + base.medianPulseInterval * part),
        medianBend(base.medianPulseInterval * bend) {}

  /// The root x of ((samples x - medianBend) x + medianBend) x = distance.
  double solve(double distance, double start) const {
    return solveRising([&](double x) { return ((samples * x - medianBend) * x + medianBend) * x - distance; },
                       [&](double x) { return (3 * samples * x - 2 * medianBend) * x + medianBend; }, start);
  }
  /// Distance on the common time base, 0 to share.
  double onTimeBase(double x) const { return ((1 - x) * bend + share * (x * x)) * x; }
};

/// The last sample of an interval in front of the bend, counted from its start; -1 when there is none.
inline int64_t lastSampleBeforeBend(const BeatTimeBase& base, double a, double interval) {
  const double bend = std::floor((interval - base.medianPulseInterval) * 0.5 + base.medianPulseInterval * a);
  return static_cast<int64_t>(std::clamp(bend, -1.0, interval - 1));
}

/// A beat on the common time base at a place between 0 and its last index, by linear interpolation.
inline double beatAt(const std::vector<double>& beat, double place) {
  const auto last = static_cast<double>(beat.size() - 1);
  const double inside = std::clamp(place, 0.0, last);
  const auto index = static_cast<size_t>(std::min(inside, last - 1));
  const double fraction = inside - static_cast<double>(index);
  return (1 - fraction) * beat[index] + fraction * beat[index + 1];
}

} // namespace emeg
