#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Writes the beats of a channel back one after another as writeBeatBack does, with the same result. The
/// warps of several intervals are solved in lockstep.
class BeatWriter {
public:
  /// `a` is the channel's warp parameter.
  BeatWriter(const BeatTimeBase& base, double a);

  /// Writes `beat` (modelLength values) into the samples of interval `index`.
  void write(size_t index, const std::vector<double>& beat, double* series, int64_t length);

private:
  void solveGroupOf(size_t index);

  const BeatTimeBase& base_;
  double a_;
  size_t group_;
  int failed_ = 0;                 ///< a bit for every interval of the group that has to be solved alone
  std::vector<double> frontRoots_; ///< for distances 0, 1, ... from the intervals' starts
  std::vector<double> backRoots_;  ///< for distances 1, 2, ... from their ends
};

} // namespace emeg
