#pragma once

#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Interference of the mains: a sinusoid of one frequency and amplitude, its phase different in every
/// channel.
class LineNoise {
public:
  explicit LineNoise(const SimulationParameters& parameters);

  /// Phase (rad) of a channel at the first sample.
  const std::vector<double>& phases() const { return phases_; }

  /// Adds the time points first ... first + count - 1 in microvolts, channel after channel; nothing at
  /// frequency 0.
  void add(int64_t first, int64_t count, std::span<double> samples) const;

private:
  LineNoiseParameters parameters_;
  double samplingFrequency_;
  std::vector<double> phases_;
};

} // namespace emeg
