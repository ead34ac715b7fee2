#pragma once

#include "dsp/SimdLevel.h"

#include <cstdint>

namespace emeg {

/// As many warp equations are solved in lockstep, each as if it were alone.
constexpr int nrOfLockstepEquations = 8;

/// Cubic equations ((samples[i] x - medianBends[i]) x + medianBends[i]) x = distance.
struct WarpEquations {
  double samples[nrOfLockstepEquations];
  double medianBends[nrOfLockstepEquations];
};

/// The hot loops of the pulse model, compiled once for every SIMD level, with the same bits on every level.
struct ResamplingKernels {
  /// Linear interpolation of a series at the places length x position[j] + start + offset[j],
  /// j = 0 ... count - 1: samples[j] becomes the sample in front of the place (at least start, at most
  /// lastSample), fractions[j] the distance of the place behind it. False when a sample lies in front of the
  /// one before it: then the places do not ascend, which only rounding can do.
  bool (*findPlaces)(double start, double length, const double* position, const double* offset, int64_t count,
                     int32_t lastSample, int32_t* samples, double* fractions);

  /// values[j] = the series there; lastSample + 1 must be readable. Returns the sum of squares; element j
  /// belongs to partial sum j mod 8, partial sums are added pairwise.
  double (*interpolate)(const double* series, int32_t lastSample, const int32_t* samples,
                        const double* fractions, int64_t count, double* values);

  /// roots[k x 8 + i] = root of equation i for distance firstDistance + k, k = 0 ... count - 1, by Newton's
  /// method as in WarpEquation.h, each from the root before it, the first from 0. Returns a bit for every
  /// equation for which the method failed anywhere: all its roots are useless.
  int (*solveWarps)(const WarpEquations& equations, double firstDistance, int64_t count, double* roots);
};

/// The kernels of a level. A level above bestSimdLevel() must not be called.
const ResamplingKernels& resamplingKernels(SimdLevel level = bestSimdLevel());

} // namespace emeg
