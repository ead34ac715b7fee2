#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"

#include <vector>

namespace emeg {

/// Where the values of the common time base lie in an interval: value j of an interval that starts at p and
/// lasts I samples lies at p + I x warpPosition[j] + warpOffset[j]. An interval of the median length is
/// sampled evenly; a longer or shorter one absorbs the difference where the warp bends.
struct WarpTable {
  std::vector<double> warpPosition; ///< from 0 to 1
  std::vector<double> warpOffset;   ///< samples
};

/// The table for warp parameter `a`: the smaller, the earlier in the interval the difference is absorbed.
WarpTable makeWarpTable(double a, const BeatTimeBase& base);

} // namespace emeg
