#pragma once

#include <span>
#include <vector>

namespace emeg {

/// The samples, with lines of the spectrum below `highestHz` cut down that stand above all others around
/// them: what is left of a gradient artifact at multiples of the slice frequency, or hum. A heart's own lines
/// lie closer together and are alike, however regularly it beats. Samples are finite; recordings of less than
/// ten seconds come back as they are.
std::vector<double> withoutSteadyLines(std::span<const double> samples, double rate, double highestHz);

} // namespace emeg
