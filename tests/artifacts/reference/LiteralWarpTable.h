#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace emeg {

/// What the plain pulse model derives once from the pulses, the same for all channels.
/// All times in samples of the series.
struct LiteralModelSetUp {
  std::vector<double> pulseIntervals; ///< from one pulse to the next
  double medianPulseInterval = 0;     ///< M
  int32_t modelLength = 3;            ///< L, values of a resampled interval
  double warpStep = 0.5;              ///< h = 1 / (L - 1)
  double warpMargin = 0;              ///< b; the warp parameter lies in [b, 1 - b]
  int32_t epochHalfLength = 2;        ///< W; an epoch has 2 W + 1 values
};

/// Where in an interval of I samples the L model values lie: value j lies
/// I * warpPosition[j] + warpOffset[j] samples behind the interval's start.
struct LiteralWarpTable {
  std::vector<double> warpPosition; ///< fraction of the interval, 0 to 1
  std::vector<double> warpOffset;   ///< samples
};

/// The table of warp parameter `a`.
LiteralWarpTable literalWarpTable(double a, const LiteralModelSetUp& setUp);

/// Factors of the linear term of the two cubics that make up the warp.
double literalFirstPartFactor(double a, const LiteralModelSetUp& setUp);
double literalSecondPartFactor(double a, const LiteralModelSetUp& setUp);

/// Root of a function that rises from at most 0 at 0 to at least 0 at 1, to be called when Newton's method
/// fails.
template <typename Value>
double literalBisection(Value value) {
  double low = 0.0;
  double high = 1.0;
  for (int round = 0; round < 100; ++round) {
    const double middle = (low + high) / 2;
    if (value(middle) < 0) {
      low = middle;
    } else {
      high = middle;
    }
  }
  return (low + high) / 2;
}

/// Root of `value` by Newton's method from `x`, until a step is no larger than 1e-10; by bisection on [0, 1]
/// when a step is not finite, the derivative is zero or 100 steps did not suffice.
template <typename Value, typename Derivative>
double literalRoot(Value value, Derivative derivative, double x) {
  for (int round = 0; round < 100; ++round) {
    const double slope = derivative(x);
    if (slope == 0) return literalBisection(value);
    const double step = value(x) / slope;
    if (!std::isfinite(step)) return literalBisection(value);
    x = x - step;
    if (std::fabs(step) <= 1e-10) return x;
  }
  return literalBisection(value);
}

} // namespace emeg
