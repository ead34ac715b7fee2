#pragma once

#include "dsp/RecordingStretch.h"

#include <span>
#include <vector>

namespace emeg {

/// Stretches in which a (sharpened, clipped) signal is busy, with interruptions of up to `longestGap`
/// seconds. A signal that is equally busy all the time is one stretch.
std::vector<PositionRange> busyStretches(std::span<const double> sharpened, double samplingFrequency,
                                         double longestGap);

/// Stretches in a row between which the quiet can be that between a scan's volumes: three or more of them, or
/// every second or third, begin or end at equal distances. Scans that an operator starts do not. A stretch
/// that belongs to no such row is a group of its own.
std::vector<std::vector<PositionRange>> possibleVolumes(const std::vector<PositionRange>& stretches,
                                                        double samplingFrequency);

} // namespace emeg
