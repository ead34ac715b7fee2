#pragma once

#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The beat times (R peaks) of a resting heart. Intervals are the mean interval plus a first-order
/// autoregressive part plus the breath's influence (respiratory sinus arrhythmia), in proportions that give
/// the wanted RMSSD. An ectopic beat comes early by about 30 % of its interval; the beat behind it keeps its
/// time, as the sinus node's rhythm goes on underneath, which makes the pause compensatory.
struct HeartBeats {
  std::vector<double> times;     ///< seconds, ascending; begins before the recording and ends after it
  std::vector<double> intervals; ///< intervals[i] leads up to times[i]
  std::vector<size_t> ectopic;   ///< ascending indices of the beats that come early, never two in a row

  /// All beats whose artifact may touch the first `seconds` seconds.
  static HeartBeats draw(const HeartParameters& parameters, uint64_t seed, double seconds);
};

/// Phase of the breath (rad) at `time` (s): four seconds a breath.
double breathPhase(double time);

} // namespace emeg
