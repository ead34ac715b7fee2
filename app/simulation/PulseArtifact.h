#pragma once

#include "app/simulation/HeartBeats.h"
#include "app/simulation/SimulationParameters.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// The artifact of the heart beat in the magnet (ballistocardiogram): after every beat a few overlapping
/// Gaussian deflections of either sign, stretched a little with the beat interval, mixed differently in every
/// channel. Its content lies below about 15 Hz.
class PulseArtifact {
public:
  /// `parameters` must hold heart parameters.
  explicit PulseArtifact(const SimulationParameters& parameters);

  const HeartBeats& beats() const { return beats_; }
  /// Onset of the artifact of beat `index` (s).
  double onset(size_t index) const { return beats_.times[index] + delay_; }
  /// Largest absolute value (microvolts) of a channel's artifact at the mean interval, outside a weak
  /// stretch; 0 for a dead channel.
  double peak(int channel) const { return peaks_[static_cast<size_t>(channel)]; }

  /// Adds nothing outside; writes the time points first ... first + count - 1 in microvolts, channel after
  /// channel.
  void fill(int64_t first, int64_t count, std::span<double> samples);

private:
  static constexpr size_t nrOfDeflections = 4;
  using Topography = std::array<double, nrOfDeflections>;

  double samplingFrequency_;
  double delay_;
  double meanInterval_;
  HeartBeats beats_;
  std::vector<double> beatSizes_;
  std::vector<Topography> topographies_; ///< microvolts of every deflection, per channel
  std::vector<double> peaks_;
  std::vector<double> deflections_; ///< of one time block, deflection after deflection
};

} // namespace emeg
