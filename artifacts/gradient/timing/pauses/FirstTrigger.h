#pragma once

#include "artifacts/gradient/SplinedSignal.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

namespace emeg {

/// Onset of the first volume, in seconds, in data with volume gaps: the slope of the signal, summed over all
/// gaps between volumes, shows where a volume's first activity begins. `firstOnset` is the sample at which
/// the first burst was seen. Where no gap is left between the volumes, that sample's time.
double firstTriggerInVolumeGaps(const SplinedSignal& signal, const MRSequence& sequence, double firstOnset,
                                double samplingFrequency);

} // namespace emeg
