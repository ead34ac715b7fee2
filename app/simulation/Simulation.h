#pragma once

#include "app/simulation/BackgroundEeg.h"
#include "app/simulation/Disturbances.h"
#include "app/simulation/Electrocardiogram.h"
#include "app/simulation/GradientArtifact.h"
#include "app/simulation/LineNoise.h"
#include "app/simulation/MovementBursts.h"
#include "app/simulation/PulseArtifact.h"
#include "app/simulation/SimulationParameters.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace emeg {

/// A stretch of a simulated recording, part by part, in microvolts. Arrays with a value per channel and time
/// point hold channel after channel: values[c * nrOfTimePoints + t].
struct SimulatedBlock {
  int64_t firstTimePoint = 0;
  int64_t nrOfTimePoints = 0;
  int nrOfChannels = 0;
  std::vector<double> clean;  ///< EEG, sensor noise, line noise and movements; electrocardiogram
  std::vector<double> bursts; ///< gradient artifact of a channel of gain 1, one value per time point
  double clipUv = 0;          ///< largest absolute value that is recorded; 0: any
  std::vector<double> pulse;  ///< heart beat artifact
  std::vector<double> gains;  ///< of the gradient artifact, one per channel

  size_t indexOf(int channel, int64_t timePoint) const {
    return static_cast<size_t>(channel) * static_cast<size_t>(nrOfTimePoints) +
           static_cast<size_t>(timePoint);
  }
  double gradient(int channel, int64_t timePoint) const {
    return gains[static_cast<size_t>(channel)] * bursts[static_cast<size_t>(timePoint)];
  }
  /// What the amplifier records.
  double recorded(int channel, int64_t timePoint) const {
    const size_t index = indexOf(channel, timePoint);
    const double sum = clean[index] + gradient(channel, timePoint) + pulse[index];
    return clipUv > 0 ? std::clamp(sum, -clipUv, clipUv) : sum;
  }
};

/// A recording in the making: hands out its time points block by block, so that memory does not grow with its
/// length. The same parameters give the same values whatever the block lengths are.
class Simulation {
public:
  /// `parameters` must have no problem (problemWith).
  explicit Simulation(const SimulationParameters& parameters);

  const SimulationParameters& parameters() const { return parameters_; }
  /// Null when the preset has no scan.
  const GradientArtifact* gradient() const { return gradient_ ? &*gradient_ : nullptr; }
  /// Null when the preset has no heart.
  const PulseArtifact* pulse() const { return pulse_ ? &*pulse_ : nullptr; }
  const Disturbances& disturbances() const { return disturbances_; }
  const LineNoise& lineNoise() const { return lineNoise_; }
  /// Null when nobody moves.
  const MovementBursts* movement() const { return movement_ ? &*movement_ : nullptr; }

  /// Fills `block` with the next time points, at most `largestCount` of them. False at the end of the
  /// recording.
  bool next(int64_t largestCount, SimulatedBlock& block);

private:
  void disturb(SimulatedBlock& block) const;

  SimulationParameters parameters_;
  BackgroundEeg eeg_;
  LineNoise lineNoise_;
  Disturbances disturbances_;
  std::optional<MovementBursts> movement_;
  std::optional<GradientArtifact> gradient_;
  std::optional<PulseArtifact> pulse_;
  std::optional<Electrocardiogram> ecg_;
  int64_t position_ = 0;
};

} // namespace emeg
