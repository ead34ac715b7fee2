#pragma once

#include "engine/Findings.h"
#include "engine/RecordingShape.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace emeg {

/// Counts the samples of a channel that lie at the limits of its integers.
int64_t nrOfSaturated(std::span<const double> values, const IntegerRange& integers);

/// Replaces such samples of a whole channel by a cubic spline through the others. Every other sample keeps
/// its bits; those in front of the first and behind the last usable one stay.
RepairedChannel repairSaturated(std::vector<double>& values, const IntegerRange& integers);

/// Bytes that this takes for a channel.
uint64_t memoryForRepair(int64_t nrOfSamples);

} // namespace emeg
