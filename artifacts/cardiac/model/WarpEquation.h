#pragma once

#include <cmath>

namespace emeg {

/// Root on [0, 1] of a rising function that is given with its slope, from a start close to it: Newton's
/// method until a step is at most 1e-10. Where that fails (a step that is not finite, a slope of 0, no end
/// within 100 steps), bisection.
template <class Function, class Slope>
double solveRising(const Function& function, const Slope& slope, double start) {
  double x = start;
  for (int round = 0; round < 100; ++round) {
    const double rise = slope(x);
    const double step = function(x) / rise;
    if (rise == 0 || !std::isfinite(step)) break;
    x -= step;
    if (std::abs(step) <= 1e-10) return x;
  }
  double low = 0;
  double high = 1;
  for (int round = 0; round < 60; ++round) {
    const double middle = 0.5 * (low + high);
    (function(middle) < 0 ? low : high) = middle;
  }
  return 0.5 * (low + high);
}

} // namespace emeg
