#pragma once

#include "app/simulation/SimulationParameters.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Voltages that movements of the head induce in the magnet: bursts of one to three seconds, each a smooth
/// random waveform of about 0.5 to 8 Hz that all channels share with a size and sign of their own.
class MovementBursts {
public:
  static constexpr size_t nrOfWaves = 6;

  struct Wave {
    double frequency = 0; ///< Hz
    double phase = 0;     ///< rad at the burst's onset
    double amplitude = 0;
  };
  struct Burst {
    double onset = 0;    ///< seconds
    double duration = 0; ///< seconds
    std::array<Wave, nrOfWaves> waves;

    /// At `time` (s): at most 1 in absolute value, 0 outside the burst.
    double value(double time) const;
  };

  /// `parameters` must hold movements.
  explicit MovementBursts(const SimulationParameters& parameters);

  /// In ascending order; they do not overlap.
  const std::vector<Burst>& bursts() const { return bursts_; }
  /// What a channel shows at a waveform of 1 (microvolts, with its sign; 0 for a dead channel).
  const std::vector<double>& channelPeaks() const { return channelPeaks_; }

  /// Adds the time points first ... first + count - 1 in microvolts, channel after channel.
  void add(int64_t first, int64_t count, std::span<double> samples) const;

private:
  double samplingFrequency_;
  std::vector<Burst> bursts_;
  std::vector<double> channelPeaks_;
};

/// The number of bursts that a recording of that length has room for.
int64_t mostMovementBursts(double seconds);

} // namespace emeg
