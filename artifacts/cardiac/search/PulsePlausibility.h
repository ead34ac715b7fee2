#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// What tells heart beats that were found from something else that was followed.
struct PulsePlausibility {
  /// The period that most stretches of the recording show, in samples: every stretch of eight seconds counts
  /// the same, however large a movement in it is. 0: none.
  int32_t commonPeriod = 0;
  double medianInterval = 0; ///< samples; 0 with fewer than two pulses
  double meanInterval = 0;
  double offIntervals = 0; ///< share of the intervals that differ by more than a third from the median
  double firstOff = -1;    ///< pulse at which the first of them begins, samples; -1: none
  /// Share of the energy around the pulses that all of them have in common, the median over channels: 0 where
  /// they have nothing in common, 1 where all are alike.
  double commonShare = 0;
  /// Share of the pulses that do not look like the average of all.
  double unlikePulses = 0;
};

/// `series` before anything is subtracted; `period` (samples) is that of the pulses.
PulsePlausibility measurePlausibility(const BcgSeries& series, const std::vector<double>& pulses,
                                      int32_t period);

} // namespace emeg
