#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// A channel in which a scan's first and last volume are whole.
struct WholeVolumes {
  std::vector<double> samples;
  int64_t nrOfAddedBefore = 0; ///< samples in front of the channel's own
  int64_t firstOfScan = 0;     ///< of the channel's own samples: the correction holds from here ...
  int64_t endOfScan = 0;       ///< ... to here; elsewhere the channel stays as it is
};

/// The template removal takes whole volumes: what a volume lacks, because the recording or the scan begins or
/// ends within it, would count as zeros in the templates of others. It is taken from the same place of the
/// next volume (or the one before), also where the channel has no samples. `segment` counts from the
/// channel's first sample; in the result all onsets come `nrOfAddedBefore` samples later. Memory: the
/// channel's and at most two volumes more.
WholeVolumes withWholeVolumes(std::span<const double> channel, const ScanSegment& segment);

} // namespace emeg
