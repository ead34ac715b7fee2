#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// The heart pulses of a recording.
struct HeartPulses {
  std::vector<double> positions;  ///< ascending, in samples of the series
  bool listIsFull = false;        ///< there are more than the list has room for
  bool candidatesAreFull = false; ///< there are more minima than the list of candidates has room for
};

/// Chooses among the minima of the detection signal those that form one regular chain through the whole
/// recording. `rate` is that of the series. At most `candidatesPerSecond` minima a second, on average, are
/// looked at: as many as the frequency to which the series is low-passed; medians over many channels have
/// more, and then the pulses end early. `capacity` bounds the pulses. Finding none is a result too.
HeartPulses selectHeartPulses(const std::vector<float>& detectionSignal, float rate,
                              float candidatesPerSecond, const HeartPeriod& heart, size_t capacity);

} // namespace emeg
