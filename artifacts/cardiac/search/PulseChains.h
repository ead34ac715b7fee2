#pragma once

#include "artifacts/cardiac/search/PulseCandidates.h"
#include "artifacts/cardiac/search/PulsePaths.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Successive heart beats as candidate indices in ascending order, two at least.
using PulseChain = std::vector<int32_t>;

/// Chains of a recording, in ascending order; no more than this many.
using PulseChains = std::vector<PulseChain>;
constexpr size_t maxNrOfChains = 10000;

/// The intervals' logarithms may differ by a quarter of an octave from beat to beat while a path is looked
/// for, at first; the tolerance grows where no path is found.
constexpr double linkingTolerances[] = {0.25, 0.30, 0.35};

/// Stretches of at least two successive intervals between seeds that are shorter than `longestInterval` and
/// differ by no more than a quarter of an octave from their neighbours.
PulseChains makeSeedChains(const PulseCandidates& candidates, const std::vector<int32_t>& seeds,
                           int32_t longestInterval);

/// The two ways through the gap between neighbouring chains, as candidate indices in ascending order. Each
/// starts at its own chain's end and ends where it reaches or passes the other chain's, or finds no way on.
struct GapPaths {
  std::vector<int32_t> forward;
  std::vector<int32_t> backward;
};
GapPaths findGapPaths(const PulseCandidates& candidates, PulsePathSearch& search, const PulseChain& before,
                      const PulseChain& after);

/// Extends and merges chains where the forward and the backward path through a gap agree on at least three
/// successive candidates; where they agree in the middle only, a new chain begins.
void linkChains(PulseChains& chains, const PulseCandidates& candidates, PulsePathSearch& search);

} // namespace emeg
