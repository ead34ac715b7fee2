#pragma once

#include "artifacts/cardiac/search/PulseChains.h"

namespace emeg {

/// Joins all chains into one. A gap is filled by the forward or the backward path where one of them connects
/// (the one with the lower average mark), otherwise with beats at intervals that change linearly from one
/// side to the other, each at the deepest candidate near its place. Nothing where there is no chain.
PulseChain fillGaps(PulseChains chains, const PulseCandidates& candidates, PulsePathSearch& search);

/// A gap's beats by linear intervals, both ends left out, in ascending order. `halfBefore` and `halfAfter`
/// are half of the intervals on either side, in samples; the number of beats follows from the gap and their
/// sum.
std::vector<int32_t> interpolateBeats(const PulseCandidates& candidates, int32_t start, int32_t end,
                                      double halfBefore, double halfAfter);

} // namespace emeg
