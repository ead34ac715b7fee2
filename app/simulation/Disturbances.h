#pragma once

#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Spikes (an electrode's contact breaks for a moment) and dropouts (the recording is 0 for a while), at
/// random times between a twentieth and nineteen twentieths of the recording.
class Disturbances {
public:
  explicit Disturbances(const SimulationParameters& parameters);

  /// Seconds from the recording's start.
  const std::vector<double>& spikeTimes() const { return spikeTimes_; }
  const std::vector<double>& dropoutTimes() const { return dropoutTimes_; }
  bool isDroppedOut(double time) const;

  /// Adds the spikes to one channel's time points from `first` on.
  void addSpikes(int64_t first, std::span<double> samples) const;

private:
  double samplingFrequency_;
  double spikeUv_;
  double dropoutDuration_;
  std::vector<double> spikeTimes_;
  std::vector<double> dropoutTimes_;
};

} // namespace emeg
