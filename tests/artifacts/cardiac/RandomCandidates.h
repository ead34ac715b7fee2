#pragma once

#include "artifacts/cardiac/search/PulseCandidates.h"
#include "artifacts/cardiac/search/PulseChains.h"
#include "tests/artifacts/reference/LiteralPathSearch.h"

#include <cstdint>
#include <random>
#include <vector>

namespace emeg {

/// Candidates to compare the searches on, in the form of either implementation.
struct CandidateSet {
  PulseCandidates candidates;
  int32_t length = 0; ///< of the signal
  int32_t shortest = 0;
  int32_t longest = 0;

  PulsePathSearch search(double toleranceExponent = 0.25) const;
  LiteralPathSearch literalSearch(double toleranceExponent = 0.25) const;
  /// Zero but for the candidates.
  std::vector<float> signal() const;
  int32_t count() const { return candidates.count(); }
};

CandidateSet candidateSet(std::vector<int32_t> positions, std::vector<int8_t> marks, int32_t shortest = 71,
                          int32_t longest = 141);

/// Anywhere, with marks and values out of a few.
CandidateSet scatteredCandidates(std::mt19937& random);
/// Beats at a slowly changing interval, a few of them missing or weakly marked, with others between them.
CandidateSet beatingCandidates(std::mt19937& random);

/// Two to six candidates each, the strongly marked ones mostly, with gaps between them.
PulseChains randomChains(const CandidateSet& set, std::mt19937& random);

} // namespace emeg
