#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// The plainest possible forms of what the correction does to one signal, for comparison. Slow.

struct PlainEdge {
  bool lowPass = false;
  double cutOff = 0; ///< in units of the Nyquist frequency
  double order = 0;
};

/// Zero-phase filter over 2^log2Length points: pads, sums sines and cosines one by one, multiplies and sums
/// back. `edges` in ascending order of their cut-offs.
std::vector<double> plainFilter(const std::vector<double>& signal, const std::vector<PlainEdge>& edges,
                                int log2Length);

/// The cubic spline through the knots, `samplesPerKnot` samples from one to the next, at `nrOfSamples`
/// samples; the fraction grows by repeated addition.
std::vector<double> plainSpline(const std::vector<double>& knots, int64_t samplesPerKnot,
                                int64_t nrOfSamples);

} // namespace emeg
