#pragma once

#include "app/simulation/AlphaRhythm.h"
#include "app/simulation/PinkNoise.h"
#include "app/simulation/SimulationParameters.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// What a recording would show without scanner and heart: noise of 1/f shape, the alpha rhythm and the
/// amplifier's own noise. Channels share sources, so neighbouring ones are partly correlated.
class BackgroundEeg {
public:
  BackgroundEeg(const EegParameters& parameters, uint64_t seed, int nrOfChannels, double samplingFrequency);

  /// Writes the next time points in microvolts, channel after channel: samples[c * count + t].
  void next(int64_t count, std::span<double> samples);

private:
  static constexpr size_t nrOfSharedSources = 4;

  struct Channel {
    PinkNoise own;
    RandomGenerator sensorNoise;
    std::array<double, nrOfSharedSources> sharedWeights{};
    double alphaLeft = 0;  ///< microvolts
    double alphaRight = 0; ///< microvolts
  };

  EegParameters parameters_;
  std::vector<PinkNoise> shared_;
  AlphaRhythm left_;
  AlphaRhythm right_;
  std::vector<Channel> channels_;
  std::vector<double>
      sources_; ///< shared sources and both alpha rhythms of one time block, source after source
};

} // namespace emeg
