#pragma once

#include "artifacts/cardiac/search/BeatSearch.h"
#include "artifacts/cardiac/series/BcgSeries.h"
#include "engine/Observer.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A way to the heart beats, and to each channel's artifact. Used by one correction.
class BeatStrategy {
public:
  virtual ~BeatStrategy() = default;
  BeatStrategy() = default;
  BeatStrategy(const BeatStrategy&) = delete;
  BeatStrategy& operator=(const BeatStrategy&) = delete;

  /// Finds the beats in the channels that show them. `ecg` is the electrocardiogram like these, empty without
  /// one. Finding none is no failure.
  virtual void find(const BcgSeries& series, const std::vector<double>& ecg, Observer& observer) = 0;

  /// Replaces the first `length` values of one channel's series by its artifact; channels in order from 0.
  virtual void replaceByEstimate(int pulseChannel, std::vector<double>& series, int64_t length,
                                 Observer& observer) = 0;
};

} // namespace emeg
