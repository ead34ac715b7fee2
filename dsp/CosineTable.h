#pragma once

#include "dsp/FFTTwiddles.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// cos(2 pi k / n) for k < n/4, where n = 2^log2Period, log2Period = 0 ... 31. Transforms of n points and
/// fewer read it; it never changes.
class CosineTable {
public:
  explicit CosineTable(int32_t log2Period);

  /// n, the length of the longest transform that the table serves.
  int64_t period() const { return period_; }

  /// The sine of k is the entry n/4 - k.
  const std::vector<double>& quarter() const { return quarter_; }

  /// Cosine and sine of 2 pi k / 2^log2N, 0 <= k < 2^log2N, 4 <= 2^log2N <= n.
  Turn turn(int64_t k, int32_t log2N) const;

private:
  int64_t period_;
  std::vector<double> quarter_;
};

} // namespace emeg
