#pragma once

#include "artifacts/cardiac/HeartPeriod.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// The heart pulses of a recording.
struct HeartPulses {
  std::vector<double> positions; ///< ascending, in samples of the series
  bool listIsFull = false;       ///< there are more than the list has room for
};

/// Chooses among the minima of the detection signal those that form one regular chain through the whole
/// recording. `rate` is that of the series and `lowPassHz` its upper frequency limit, which bounds the number
/// of minima; `capacity` bounds the pulses. Finding none is a result too.
HeartPulses selectHeartPulses(const std::vector<float>& detectionSignal, float rate, float lowPassHz,
                              const HeartPeriod& heart, size_t capacity);

} // namespace emeg
