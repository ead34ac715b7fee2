#pragma once

#include "artifacts/cardiac/search/PulseCandidates.h"

#include <cstdint>

namespace emeg {

/// Looks for the next beat among the candidates: where an interval like the previous one leads to, so that
/// the beats behind it are strongly marked too.
class PulsePathSearch {
public:
  /// `seriesLength`, `shortestInterval` and `longestInterval` in samples.
  PulsePathSearch(const PulseCandidates& candidates, int64_t seriesLength, int32_t shortestInterval,
                  int32_t longestInterval)
      : candidates_(candidates), seriesLength_(seriesLength), shortest_(shortestInterval),
        longest_(longestInterval) {}

  /// Intervals may change by a factor of 2^-exponent to 2^exponent from beat to beat.
  void setTolerance(double exponent);

  /// The candidate that follows `candidate` when the interval before it was `previousInterval` samples: the
  /// one from which the best path of `depth` candidates begins (lowest average mark; the first wins ties).
  /// Where no candidate lies at such an interval, the last one before or the first one behind, whichever is
  /// marked more strongly (the nearer one wins ties). `candidate` itself when there is none.
  int32_t followPathForward(int32_t candidate, double previousInterval, int depth) {
    return follow(candidate, previousInterval, depth, 1);
  }
  /// The mirror image, towards earlier candidates.
  int32_t followPathBackward(int32_t candidate, double previousInterval, int depth) {
    return follow(candidate, previousInterval, depth, -1);
  }

private:
  int32_t follow(int32_t candidate, double previousInterval, int depth, int step);
  int32_t firstAtLeast(int32_t candidate, double distance, int step) const;
  double distance(int32_t from, int32_t to, int step) const {
    return static_cast<double>(step) *
           (static_cast<double>(candidates_.position(to)) - static_cast<double>(candidates_.position(from)));
  }

  const PulseCandidates& candidates_;
  int64_t seriesLength_;
  int32_t shortest_;
  int32_t longest_;
  double pulseToleranceLow_ = 1;
  double pulseToleranceHigh_ = 1;
  double pathMarkSum_ = 0; ///< of the path that was found last
  double pathLength_ = 0;
};

} // namespace emeg
