#pragma once

#include "dsp/SimdLevel.h"

#include <cstdint>

namespace emeg {

/// Hot loops over arrays of doubles, compiled once for every SIMD level. Every result has the same bits on
/// every level: no multiply-add is fused, and the order of every sum is fixed, as each member says. So no
/// threshold or comparison further on depends on the machine.
struct VectorKernels {
  /// out[p] = sum over i of s[p + i] x w[i], p = 0 ... count - 1, i = 0 ... taps - 1 in ascending order.
  /// Reads count + taps - 1 samples.
  void (*slidingDot)(const double* s, const double* w, int64_t taps, int64_t count, double* out);

  /// out[p] = sum over i of s[p + i], in ascending order of i.
  void (*slidingSum)(const double* s, int64_t taps, int64_t count, double* out);

  /// out[p] = sum over i of g[i] x (f[p] x s[p + i] + w[i])^2, in ascending order of i.
  void (*slidingWeightedSquares)(const double* s, const double* f, const double* g, const double* w,
                                 int64_t taps, int64_t count, double* out);

  /// Sum over i of a[i] x b[i]. Element i belongs to partial sum i mod 8; partial sums are added pairwise.
  double (*dot)(const double* a, const double* b, int64_t count);
  /// The same for four rows that begin `stride` values apart.
  void (*dotFour)(const double* rows, int64_t stride, const double* b, int64_t count, double* results);

  /// out[i] += a[i] x factor.
  void (*addScaled)(const double* a, double factor, int64_t count, double* out);
  /// The same for four rows that begin `stride` values apart, one after the other.
  void (*addScaledFour)(const double* rows, int64_t stride, const double* factors, int64_t count,
                        double* out);
};

/// The kernels of a level. A level above bestSimdLevel() must not be called.
const VectorKernels& vectorKernels(SimdLevel level = bestSimdLevel());

} // namespace emeg
