#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the search for a regular path of heart beats, to compare the real one
/// with. Positions and lengths are in samples of the detection signal; chains and paths hold indices into the
/// list of candidates, always in ascending order.

using LiteralChain = std::vector<int32_t>;

/// Search for the next beat, `depth` beats ahead.
struct LiteralPathSearch {
  std::vector<int32_t> candidates;
  std::vector<int8_t> marks;
  int32_t length = 0; ///< of the signal
  int32_t shortest = 0;
  int32_t longest = 0;
  double toleranceExponent = 0.25; ///< an interval may change by a factor of 2^-t ... 2^t

  double pathMarkSum = 0; ///< of the winning path of the last call, behind the candidate it started from
  double pathLength = 0;  ///< number of candidates in that sum

  /// The candidate that follows c on the best path, or c itself; `q` is the interval before c.
  int32_t forward(int32_t c, double q, int depth);
  int32_t backward(int32_t c, double q, int depth);
};

/// The paths between two neighbouring chains, start candidate included. The one forward starts at the tail of
/// `earlier` and ends when it reaches or passes the head of `later` or stops moving; the one backward is its
/// mirror image.
std::vector<int32_t> literalForwardPath(LiteralPathSearch& search, const LiteralChain& earlier,
                                        const LiteralChain& later);
std::vector<int32_t> literalBackwardPath(LiteralPathSearch& search, const LiteralChain& earlier,
                                         const LiteralChain& later);

/// The candidates from the first common one for as long as the paths stay together.
std::vector<int32_t> literalSharedRun(const std::vector<int32_t>& forwardPath,
                                      const std::vector<int32_t>& backwardPath);

} // namespace emeg
