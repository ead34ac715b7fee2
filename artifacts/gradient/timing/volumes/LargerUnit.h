#pragma once

#include "artifacts/gradient/timing/volumes/Repeats.h"

#include <cstdint>
#include <span>

namespace emeg {

/// How many repeats (slices) make the next larger unit (a volume): what is left after the average repeat is
/// taken away repeats itself after so many. 1 when it does not.
int64_t repeatsPerLargerUnit(std::span<const double> sharpened, const FittedRepeats& repeats,
                             double samplingFrequency);

} // namespace emeg
