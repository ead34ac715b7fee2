#pragma once

#include "artifacts/gradient/SplinedSignal.h"

#include <cstdint>

namespace emeg {

/// out[t] += weight x (spline value at first + t + fraction), t = 0 ... count - 1. Positions outside the
/// signal add nothing. The hot loop of the gradient correction.
void addShiftedSpline(const SplinedSignal& signal, int64_t first, double fraction, double weight,
                      int64_t count, double* out);

} // namespace emeg
