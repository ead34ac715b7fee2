#pragma once

#include "dsp/FFTPlan.h"
#include "dsp/FFTTwiddles.h"
#include "dsp/FilterFFT.h"
#include "dsp/RealFFTPlan.h"
#include "dsp/SimdLevel.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace emeg {

/// The steps of a long transform, compiled once for every SIMD level. Every lane of a register holds a column
/// or a row of its own; what is done to a point does not depend on the number of lanes, and no multiply-add
/// is fused, so that every level gives the same bits. `points` holds the complex points of the plan,
/// interleaved.
struct LongFFTPasses {
  int64_t lanes;

  /// Complex transforms, the three one after the other: the columns, turned; the rows; and the exchange of
  /// groups of bins that brings them into natural order. Everything is a forward transform; with `swapped`
  /// real and imaginary parts have changed places on the way in and out, which makes it an inverse one.
  void (*transformColumns)(const LongFFT& fft, double* points, bool swapped);
  void (*transformRows)(const LongFFT& fft, double* points, bool swapped);
  void (*toNaturalOrder)(const LongFFT& fft, double* points);

  /// Between the spectrum of complex points and that of a real signal, but for DC and Nyquist.
  void (*splitSpectrum)(const RealFFTPlan& plan, double* spectrum);
  void (*mergeSpectrum)(const RealFFTPlan& plan, double* spectrum);

  /// Filtering, the three one after the other: the columns, turned, each row beside the one with its mirrors;
  /// the rows forward, times the gains, and inverse; the columns inverse.
  void (*transformColumnsInPairs)(const LongFFT& fft, double* points);
  void (*filterRows)(const LongFFT& fft, const RealFFTPlan& plan, const BinGains& gains, double* points);
  void (*restoreColumns)(const LongFFT& fft, double* points);
};

/// The passes of a level. A level above bestSimdLevel() must not be called.
const LongFFTPasses& longFFTPasses(SimdLevel level = bestSimdLevel());

} // namespace emeg
