#pragma once

#include "artifacts/gradient/SplinedSignal.h"
#include "artifacts/gradient/timing/pauses/QuietRuns.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Measures delays between gradient bursts with sub-sample precision, by shifting the spline through the
/// signal until the two bursts match best in the least-squares sense.
class BurstDelay {
public:
  /// `alignHalfWidth` (samples, at least 1) bounds the search around the coarse delay.
  BurstDelay(const SplinedSignal& signal, const std::vector<QuietRun>& runs, int32_t alignHalfWidth)
      : signal_(signal), runs_(runs), alignHalfWidth_(alignHalfWidth) {}

  /// Mean over j = 0 ... length - 1 of (y[start + j] - spline at position + j)^2.
  double splineMismatch(int64_t start, double position, int64_t length) const;

  /// Delay in samples from the burst behind quiet run `a` to the one behind quiet run `b`. A run past the
  /// list ends with the signal. NaN when one of the bursts does not exist or nothing is left to compare.
  double measureBurstDelay(int64_t a, int64_t b) const;

private:
  int64_t endOfRun(int64_t index) const;

  const SplinedSignal signal_;
  const std::vector<QuietRun>& runs_;
  int32_t alignHalfWidth_;
};

} // namespace emeg
