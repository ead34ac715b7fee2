#pragma once

#include <cmath>
#include <span>

namespace emeg {

/// Sum of squares, in plain order.
inline double energyOf(std::span<const double> samples) {
  double energy = 0;
  for (const double x : samples) energy += x * x;
  return energy;
}

/// 1 / sqrt(energy), and 0 without energy (or with one that is not a number).
inline double normFactor(double energy) {
  return energy > 0 ? 1 / std::sqrt(energy) : 0.0;
}

} // namespace emeg
