#pragma once

#include "artifacts/gradient/timing/slices/SliceStructure.h"
#include "artifacts/gradient/timing/volumes/Repeats.h"

#include <optional>
#include <span>

namespace emeg {

/// Onset (samples) of some volume. `twoVolumes` is the average of two volumes in a row from the line's onset
/// on. Where the scan's begin was seen, the first slice begins there, unless the volume shows clearly that
/// another slice is the first one. The onset then moves, by less than a third of a slice, to where cutting
/// costs least: the removal's templates fade in and out over a third of a slice, so that activity around the
/// cut is left where the scan begins and ends.
double volumeOnset(std::span<const double> twoVolumes, const RepeatLine& line, const SliceStructure& slices,
                   std::optional<double> begin);

} // namespace emeg
