#pragma once

#include "artifacts/gradient/timing/pauses/BurstDelay.h"
#include "artifacts/gradient/timing/pauses/QuietRuns.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Which quiet runs separate slices and which separate volumes.
struct QuietBands {
  LengthBand slice;
  LengthBand volume; ///< empty without volume gaps
  bool hasVolumeGaps = false;
};

/// The most frequent length class is the slice gap; a longer class that is frequent enough is the volume gap.
QuietBands findQuietBands(const std::vector<LengthClass>& classes);

/// Volumes, slices per volume, and the index of the quiet run in front of the first slice (with volume gaps)
/// or behind it (continuous acquisition).
struct SliceCounts {
  int32_t nrOfVolumes = 0;
  int32_t nrOfSlicesPerVolume = 0;
  int32_t firstSlice = 0;
};

/// Counts runs of the two kinds between the first and the last complete volume.
SliceCounts countWithVolumeGaps(const std::vector<QuietRun>& runs, const QuietBands& bands);

/// Counts from the first 200 intervals between bursts: those that hold the dead time at the end of a volume
/// are longer, and their distance is the number of slices. Logs the intervals that it takes for longer.
SliceCounts countContinuous(const std::vector<QuietRun>& runs, const QuietBands& bands,
                            const BurstDelay& delays, double samplingFrequency, const LogLine& log);

} // namespace emeg
