#pragma once

#include "artifacts/gradient/timing/volumes/Repeats.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// The average of the repeats, as averageRepeat, without the blocks of `blockLength` samples in which a
/// repeat is further off the others than most are: a spike, a dropout or the recording's edge spoils a few
/// milliseconds of one repeat and leaves nothing in the average, which may then be searched for differences
/// of a few percent between its slices.
std::vector<double> typicalRepeat(std::span<const double> signal, const RepeatLine& line, RepeatRange range,
                                  int64_t length, int64_t blockLength, const std::vector<bool>& used = {});

} // namespace emeg
