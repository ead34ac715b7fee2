#pragma once

#include "artifacts/gradient/timing/Autocorrelation.h"
#include "artifacts/gradient/timing/Periodicity.h"

#include <vector>

namespace emeg {

/// Larger units of a slice (samples) that the signal repeats: pairs of slices, volumes; in ascending order.
/// Slices that are nearly alike leave a volume little to stand out by at one lag; but at all of its multiples
/// it stands out of the slices around them. None where all slices are alike.
std::vector<Period> volumesOfSlices(const Autocorrelation& correlation, double slice);

/// Whether a period is so many slices, as any would be if they were alike.
bool isMadeOfSlices(double period, double slice);

} // namespace emeg
