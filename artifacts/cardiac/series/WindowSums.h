#pragma once

#include <cstdint>

namespace emeg {

/// sums[p] = values[p] + ... + values[p + taps - 1], p = 0 ... count - 1, in a time that does not grow with
/// the window (`taps` >= 1). Only additions: a large value leaves nothing behind when the window has passed
/// it. Reads count + taps - 1 values; `scratch` has room for as many.
///
/// van Herk: A fast algorithm for local minimum and maximum filters on rectangular and octagonal kernels,
/// Pattern Recognition Letters 13 (1992), with sums in place of extrema.
void windowSums(const double* values, int64_t taps, int64_t count, double* sums, double* scratch);

} // namespace emeg
