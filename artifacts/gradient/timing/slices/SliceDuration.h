#pragma once

#include "artifacts/gradient/timing/slices/SliceStructure.h"
#include "artifacts/gradient/timing/volumes/CircularVolume.h"

namespace emeg {

/// Samples from one slice to the next: what is known of it, sharpened on the volume; else the shortest
/// distance at which the volume resembles itself as much as at any. `flatVolume` is the volume with its
/// spectrum evened out. 0 when the volume does not resemble itself.
double sliceDurationIn(const CircularVolume& volume, const CircularVolume& flatVolume,
                       const KnownSlices& known);

} // namespace emeg
