#pragma once

#include "dsp/RecordingStretch.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// What there is of a beat on its side without a neighbour, in whole samples.
struct OuterBeat {
  int64_t length = 0; ///< of the interval that would be there: the median of those around
  int64_t reach = 0;  ///< how far from the beat its artifact is modelled
};

/// Beats that follow each other without a gap.
struct BeatStretch {
  size_t firstBeat = 0;
  size_t lastBeat = 0; ///< included
  OuterBeat inFront;   ///< of the first beat
  OuterBeat behind;    ///< the last
};

/// Cuts beats (ascending, whole samples; three at least) where an interval is longer than `gapFactor` times
/// the median of up to twelve on either side; 0 cuts nowhere. A beat reaches 0.6 intervals out, as the epochs
/// of the model do, and never past the middle of the gap.
std::vector<BeatStretch> splitAtGaps(const std::vector<double>& beats, double gapFactor);

/// The samples that the model explains, the fades included.
PositionRange modelledSamples(const BeatStretch& stretch, const std::vector<double>& beats, int64_t length);

} // namespace emeg
