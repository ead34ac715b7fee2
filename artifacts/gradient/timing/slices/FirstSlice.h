#pragma once

#include "artifacts/gradient/timing/slices/SliceStructure.h"
#include "artifacts/gradient/timing/volumes/CircularVolume.h"

#include <vector>

namespace emeg {

/// As many whole samples as a slice has.
std::vector<double> averageSlice(const CircularVolume& volume, const SliceStructure& slices);

/// Moves the onset, by less than a slice, to where slices become active behind their quiet (if they have
/// any).
void snapToActivity(const CircularVolume& volume, SliceStructure& slices);

/// The slice that differs most from the average: its onset, if it stands out.
void findFirstSlice(const CircularVolume& volume, SliceStructure& slices);

} // namespace emeg
