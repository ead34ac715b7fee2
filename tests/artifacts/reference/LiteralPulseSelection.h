#pragma once

#include "tests/artifacts/reference/LiteralHeartPeriod.h"
#include "tests/artifacts/reference/LiteralPathSearch.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the selection of heart pulses among the minima of the detection signal,
/// step by step, to compare the real one with. Positions and lengths are in samples of that signal; chains,
/// paths and seeds hold indices into the list of candidates, always in ascending order.

/// Strict local minima, at most as many as a signal below 35 Hz can have; `rate` in Hz.
std::vector<int32_t> literalCandidates(const std::vector<float>& signal, float rate);

struct LiteralMarks {
  std::vector<int8_t> marks;  ///< one for each candidate: 0 unmarked, -7 ... -1 marked in pass 1 ... 7
  std::vector<int32_t> seeds; ///< marked in the first pass
};

LiteralMarks literalMarks(const std::vector<float>& signal, const std::vector<int32_t>& candidates,
                          int32_t shortest);

std::vector<LiteralChain> literalSeedChains(const std::vector<int32_t>& candidates,
                                            const std::vector<int32_t>& seeds, int32_t longest);

/// Once over all pairs, with the search's tolerance.
std::vector<LiteralChain> literalLinkChainsOnce(LiteralPathSearch& search, std::vector<LiteralChain> chains);
/// With all tolerances, from the narrowest; leaves the widest in the search.
std::vector<LiteralChain> literalLinkChains(LiteralPathSearch& search, std::vector<LiteralChain> chains);

/// Average mark of a path that connects the two chains, the last candidate in walking order excepted; 0 for
/// one that does not connect them.
double literalForwardScore(const LiteralPathSearch& search, const std::vector<int32_t>& path,
                           const LiteralChain& later);
double literalBackwardScore(const LiteralPathSearch& search, const std::vector<int32_t>& path,
                            const LiteralChain& earlier);

/// How the remainder of a gap is divided into beats.
struct LiteralGapPlan {
  int32_t nrOfSteps = 0;
  double firstStep = 0; ///< 0 with fewer than two steps, as is the last
  double lastStep = 0;
};

LiteralGapPlan literalGapPlan(double gap, double halfBefore, double halfBehind);

/// The candidate for a beat expected at `expected`, strictly between `start` and `end`; -1 for none.
int32_t literalGapChoice(const std::vector<float>& signal, const std::vector<int32_t>& candidates,
                         double expected, double step, int32_t start, int32_t end);
/// Interpolated beats between the two chains.
std::vector<int32_t> literalInterpolatedBeats(const std::vector<float>& signal,
                                              const std::vector<int32_t>& candidates,
                                              const LiteralChain& earlier, const LiteralChain& later);
/// One chain of two and all between them.
LiteralChain literalFilledPair(const std::vector<float>& signal, LiteralPathSearch& search,
                               const LiteralChain& earlier, const LiteralChain& later);
/// Until one chain remains.
std::vector<LiteralChain> literalFillGaps(const std::vector<float>& signal, LiteralPathSearch& search,
                                          std::vector<LiteralChain> chains);

/// All of the above: positions of the pulses, ascending, at most `capacity`. No pulses for a period of 0 or
/// an empty signal.
std::vector<double> literalPulsePositions(const std::vector<float>& signal, int32_t length, float rate,
                                          const LiteralPeriod& heart, int32_t capacity = 3000);

} // namespace emeg
