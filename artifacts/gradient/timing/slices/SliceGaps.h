#pragma once

#include "artifacts/gradient/timing/volumes/CircularVolume.h"

#include <cstdint>
#include <optional>

namespace emeg {

/// The stretch in which slices follow each other without a gap.
struct SimilarStretch {
  int64_t begin = 0;
  int64_t length = 0;
};

/// Where the volume resembles itself one slice later; quiet belongs to what surrounds it. Nothing when that
/// is everywhere.
std::optional<SimilarStretch> stretchOfSlices(const CircularVolume& volume, double slice);

/// The count that fits the volume's length, the gap (if any) taken off.
int32_t countSlices(const CircularVolume& volume, double slice, const std::optional<SimilarStretch>& stretch);

/// The place where the distance between slices is longer: there the volume differs most from itself one slice
/// later, more than where the first slice follows on it. The first slice's onset; nothing when no place
/// stands out.
std::optional<double> onsetBehindDeadTime(const CircularVolume& volume, double slice, double deadTime);

} // namespace emeg
