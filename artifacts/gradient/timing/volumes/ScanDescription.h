#pragma once

#include "artifacts/gradient/ScanSegment.h"
#include "artifacts/gradient/timing/slices/SliceStructure.h"
#include "artifacts/gradient/timing/volumes/Periodicity.h"
#include "artifacts/gradient/timing/volumes/Repeats.h"

#include <optional>
#include <span>

namespace emeg {

/// What is known about a scan before its volumes are looked at.
struct KnownTiming {
  KnownSlices slices;
  std::optional<double> volumeOnset; ///< samples; of any volume
  /// The repeats are slices that nothing tells apart: so many are to make a volume. 0: the repeats are
  /// volumes.
  int32_t slicesTakenForVolume = 0;
};

/// Follows a scan from the volumes that are known (`volumes`, a fit to the sharpened and clipped signal) to
/// where it begins and ends within `limits`, and describes it. Nothing when there are not two volumes.
std::optional<ScanSegment> describeScan(std::span<const double> sharpened, double samplingFrequency,
                                        FittedRepeats volumes, PositionRange limits,
                                        const KnownTiming& known);

} // namespace emeg
