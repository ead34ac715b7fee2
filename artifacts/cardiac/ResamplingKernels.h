#pragma once

#include "dsp/SimdLevel.h"

#include <cstdint>

namespace emeg {

/// As many intervals are resampled in lockstep; each is computed as if it were alone.
constexpr int nrOfLockstepIntervals = 8;

/// First samples and lengths of intervals of one channel.
struct LockstepIntervals {
  double starts[nrOfLockstepIntervals];
  double lengths[nrOfLockstepIntervals];
};

/// Cubic equations ((samples[i] x - medianBends[i]) x + medianBends[i]) x = distance.
struct WarpEquations {
  double samples[nrOfLockstepIntervals];
  double medianBends[nrOfLockstepIntervals];
};

/// The hot loops of the pulse model, compiled once for every SIMD level, with the same bits on every level.
struct ResamplingKernels {
  /// values[j x 8 + i] = linear interpolation of the series at
  /// lengths[i] x position[j] + starts[i] + offset[j], j = 0 ... count - 1; the sample in front of that place
  /// is searched from starts[i] upwards and never goes back. Indices stay within 0 ... lastSample + 1, of
  /// which the last must be readable. energies[i] = sum of squares, in ascending order of j.
  void (*resample)(const double* series, int64_t lastSample, const LockstepIntervals& intervals,
                   const double* position, const double* offset, int64_t count, double* values,
                   double* energies);

  /// sum[j] += factors[i] x values[j x 8 + i], i = 0 ... nrOfIntervals - 1 in ascending order.
  void (*addScaledIntervals)(const double* values, const double* factors, int nrOfIntervals, int64_t count,
                             double* sum);

  /// roots[k x 8 + i] = root of equation i for distance firstDistance + k, k = 0 ... count - 1, by Newton's
  /// method as in WarpEquation.h, each from the root before it, the first from 0. Returns a bit for every
  /// equation for which the method failed anywhere: all its roots are useless.
  int (*solveWarps)(const WarpEquations& equations, double firstDistance, int64_t count, double* roots);
};

/// The kernels of a level. A level above bestSimdLevel() must not be called.
const ResamplingKernels& resamplingKernels(SimdLevel level = bestSimdLevel());

} // namespace emeg
