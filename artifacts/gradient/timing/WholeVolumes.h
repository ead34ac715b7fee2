#pragma once

#include "artifacts/gradient/SequenceDetection.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// A channel to which the missing parts of its first and last volume have been added.
struct WholeVolumes {
  std::vector<double> samples;
  int64_t nrOfAddedBefore = 0; ///< samples in front of the channel's own
};

/// The template removal takes whole volumes: what a volume lacks would count as zeros in the templates of
/// others. Where the sequence begins before the channel or ends behind it, what is missing is taken from the
/// same place of the nearest volume that has it. The sequence's onsets count from the channel's first sample;
/// in the result they come `nrOfAddedBefore` samples later. At most one volume is added at either end.
WholeVolumes withWholeVolumes(std::span<const double> channel, const MRSequence& sequence,
                              double samplingFrequency);

} // namespace emeg
