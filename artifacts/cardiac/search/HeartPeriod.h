#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>

namespace emeg {

/// The beat interval that all channels share, in samples of the series.
struct HeartPeriod {
  int32_t period = 0;   ///< 0: no channel shows one
  int32_t shortest = 0; ///< beat intervals that the pulse search accepts: the period divided by sqrt(2) ...
  int32_t longest = 0;  ///< ... and multiplied by it

  double beatsPerMinute(float rate) const;
};

/// Finds in every channel the lag between 140 and 35 beats per minute with the largest autocorrelation sum
/// over the middle of the recording (15 % to 85 %); the period is the median over channels. Among equal sums
/// the smallest lag wins. A channel without any comparable sum keeps the lag of the channel before it.
HeartPeriod estimateHeartPeriod(const BcgSeries& series);

} // namespace emeg
