#pragma once

#include "artifacts/cardiac/BcgSeries.h"
#include "artifacts/cardiac/HeartPeriod.h"
#include "engine/Observer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// The heart beats of a recording. Positions in samples of the series in which they were found.
struct FoundBeats {
  HeartPeriod period;
  float rate = 0; ///< of the series, Hz
  std::vector<double> positions;
  bool listIsFull = false;        ///< there are more beats than are kept
  bool candidatesAreFull = false; ///< there are more minima than are looked at
};

/// A way to the heart beats, and to each channel's artifact. Used by one correction.
class BeatStrategy {
public:
  virtual ~BeatStrategy() = default;
  BeatStrategy() = default;
  BeatStrategy(const BeatStrategy&) = delete;
  BeatStrategy& operator=(const BeatStrategy&) = delete;

  /// Finds the beats in the channels that show them. `ecg` is the electrocardiogram like these, empty without
  /// one. Finding none is no failure.
  virtual FoundBeats find(const BcgSeries& series, const std::vector<double>& ecg, Observer& observer) = 0;

  /// Replaces the first `length` values of one channel's series by its artifact; channels in order from 0.
  virtual void replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                                 Observer& observer) = 0;
};

} // namespace emeg
