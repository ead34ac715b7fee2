#include "tests/artifacts/cardiac/RandomCandidates.h"

namespace emeg {

namespace {

int32_t below(std::mt19937& random, int32_t limit) {
  return static_cast<int32_t>(random() % static_cast<uint32_t>(limit));
}

void addCandidate(CandidateSet& set, int32_t position, int mark, float value) {
  set.candidates.positions.push_back(position);
  set.candidates.marks.push_back(static_cast<int8_t>(mark));
  set.candidates.values.push_back(value);
}

/// One of few, so that many are equal.
float someDepth(std::mt19937& random) {
  return -0.25F * static_cast<float>(1 + below(random, 5));
}

} // namespace

PulsePathSearch CandidateSet::search(double toleranceExponent) const {
  PulsePathSearch search(candidates, length, shortest, longest);
  search.setTolerance(toleranceExponent);
  return search;
}

LiteralPathSearch CandidateSet::literalSearch(double toleranceExponent) const {
  return {candidates.positions, candidates.marks, length, shortest, longest, toleranceExponent};
}

std::vector<float> CandidateSet::signal() const {
  std::vector<float> signal(static_cast<size_t>(length), 0.0F);
  for (int32_t i = 0; i < count(); ++i)
    signal[static_cast<size_t>(candidates.position(i))] = candidates.value(i);
  return signal;
}

CandidateSet candidateSet(std::vector<int32_t> positions, std::vector<int8_t> marks, int32_t shortest,
                          int32_t longest) {
  CandidateSet set;
  set.length = positions.back() + 500;
  set.shortest = shortest;
  set.longest = longest;
  set.candidates.values.assign(positions.size(), -1.0F);
  set.candidates.positions = std::move(positions);
  set.candidates.marks = std::move(marks);
  return set;
}

CandidateSet scatteredCandidates(std::mt19937& random) {
  CandidateSet set;
  set.shortest = 1 + below(random, 80);
  set.longest = set.shortest + below(random, 2 * set.shortest);
  const int32_t spread = 2 + below(random, 2 * set.shortest);
  const int32_t count = 2 + below(random, 60);
  int32_t position = 0;
  for (int32_t i = 0; i < count; ++i) {
    position += 1 + below(random, spread);
    addCandidate(set, position, -below(random, 8), someDepth(random));
  }
  set.length = position + 2 + below(random, 100);
  return set;
}

CandidateSet beatingCandidates(std::mt19937& random) {
  CandidateSet set;
  set.shortest = 71;
  set.longest = 141;
  const int32_t nrOfBeats = 10 + below(random, 40);
  const int32_t missing = below(random, 6);
  double interval = 95 + below(random, 10);
  double position = 100;
  for (int32_t beat = 0; beat < nrOfBeats; ++beat) {
    const int32_t here = static_cast<int32_t>(position);
    const bool weak = below(random, 10) < missing;
    if (!(weak && below(random, 3) == 0))
      addCandidate(set, here, weak ? -below(random, 8) : -7, someDepth(random));
    interval += below(random, 13) - 6;
    interval = interval < 80 ? 80 : (interval > 125 ? 125 : interval);
    for (int32_t other = here + 15 + below(random, 15); other < here + interval - 12;
         other += 20 + below(random, 40))
      addCandidate(set, other, below(random, missing + 2) == 0 ? -below(random, 8) : -below(random, 4),
                   0.5F * someDepth(random));
    position += interval;
  }
  set.length = static_cast<int32_t>(position) + 50;
  return set;
}

PulseChains randomChains(const CandidateSet& set, std::mt19937& random) {
  PulseChains chains;
  int32_t next = below(random, 3);
  const int32_t gap = 2 + below(random, 25);
  while (next + 1 < set.count()) {
    // Like the chains of seeds: what is strongly marked, or else whatever comes.
    PulseChain chain;
    const int32_t wanted = 2 + below(random, 5);
    const bool strongOnly = below(random, 4) != 0;
    for (; next < set.count() && static_cast<int32_t>(chain.size()) < wanted; ++next)
      if (!strongOnly || set.candidates.mark(next) == -7) chain.push_back(next);
    if (chain.size() > 1) chains.push_back(chain);
    next += below(random, gap);
  }
  return chains;
}

} // namespace emeg
