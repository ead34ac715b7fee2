#pragma once

#include "dsp/FFTPlan.h"
#include "dsp/FFTTwiddles.h"
#include "dsp/SimdLevel.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace emeg {

/// The steps of a long transform, compiled once for every SIMD level. Every lane of a register holds a column or a
/// row of its own; what is done to a point does not depend on the number of lanes, and no multiply-add is fused, so
/// that every level gives the same bits.
///
/// `points` holds plan.rows() x plan.columns() interleaved complex points, `work` plan.workspaceSize() doubles.
/// Everything is a forward transform; with `swapped` real and imaginary parts have changed places on the way in and
/// out, which makes it an inverse one.
struct LongFFTPasses {
  /// Transforms the columns and turns the results; leaves them in an order that only transformRows understands.
  void (*transformColumns)(const FFTPlan& plan, const uint32_t* reversals, double* points, void* work,
                           bool swapped);
  /// Transforms the rows; leaves groups of bins in an order that only toNaturalOrder understands.
  void (*transformRows)(const FFTPlan& plan, const uint32_t* reversals, double* points, void* work,
                        bool swapped);
  void (*toNaturalOrder)(const FFTPlan& plan, double* points);
};

/// The passes of a level. A level above bestSimdLevel() must not be called.
const LongFFTPasses& longFFTPasses(SimdLevel level = bestSimdLevel());

} // namespace emeg
