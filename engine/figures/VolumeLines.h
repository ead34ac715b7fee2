#pragma once

#include "engine/figures/VolumeAverage.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// The lines of the average over pairs of volumes (`pairAverage`, microvolts, evenly spaced over two volumes)
/// in a frequency range: even multiples of half the volume frequency are the scan's, odd ones the background.
VolumeLockedPart volumeLinesOf(std::vector<double> pairAverage, const MRSequence& sequence,
                               const FrequencyRange& range);

/// Values by which `later` lags behind `earlier`: the highest cross-correlation of at most `longestLag` to
/// either side, with a parabola through its neighbours. Both are taken as periodic, of the same length, and
/// without their means.
double lagBetween(std::span<const double> earlier, std::span<const double> later, int64_t longestLag);

} // namespace emeg
