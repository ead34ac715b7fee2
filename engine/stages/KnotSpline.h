#pragma once

#include "engine/stages/StageRun.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Adds sign x the spline through the knots to the channel, `samplesPerKnot` samples from one knot to the
/// next.
void combineWithSpline(StageRun& run, const std::vector<double>& knots, int64_t nrOfKnots,
                       int64_t samplesPerKnot, double sign);

} // namespace emeg
