#pragma once

#include <cstdint>

namespace emeg {

/// A signal at unit sample spacing with the coefficients of the cubic spline through it (see CubicSplines.h).
/// The arrays belong to somebody else.
struct SplinedSignal {
  const double* y = nullptr;
  const double* b = nullptr;
  const double* c = nullptr;
  const double* d = nullptr;
  int64_t nrOfSamples = 0;

  /// Value at position k + f, 0 <= f < 1, k inside the signal.
  double value(int64_t k, double f) const { return ((d[k] * f + c[k]) * f + b[k]) * f + y[k]; }
  /// Slope per sample there.
  double derivative(int64_t k, double f) const { return (3 * f * d[k] + 2 * c[k]) * f + b[k]; }
};

} // namespace emeg
