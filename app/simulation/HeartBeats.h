#pragma once

#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The beat times (R peaks) of a resting heart. Intervals are the mean interval plus a first-order
/// autoregressive part plus the breath's influence (respiratory sinus arrhythmia), in proportions that give
/// the wanted RMSSD.
struct HeartBeats {
  std::vector<double> times;     ///< seconds, ascending; begins before the recording and ends after it
  std::vector<double> intervals; ///< intervals[i] leads up to times[i]

  /// All beats whose artifact may touch the first `seconds` seconds.
  static HeartBeats draw(const HeartParameters& parameters, uint64_t seed, double seconds);
};

/// Phase of the breath (rad) at `time` (s): four seconds a breath.
double breathPhase(double time);

} // namespace emeg
