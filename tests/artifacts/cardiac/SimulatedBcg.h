#pragma once

#include "app/simulation/SimulationParameters.h"
#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A simulated recording without scanner as the cardiac correction meets it: high-passed at 1 Hz, low-passed
/// at 35 Hz, reduced to about 250 Hz and rounded to 32-bit float; with its truth.
struct SimulatedBcg {
  std::vector<std::vector<double>> series;   ///< per channel, `length` samples and a 0 behind them
  std::vector<std::vector<double>> artifact; ///< the heart beat artifact alone, as it was put in
  int64_t length = 0;
  float rate = 0;
  std::vector<double> beats; ///< onsets of the artifact inside the recording, in samples of the series

  BcgSeries view() const { return {series, length, rate}; }
};

SimulatedBcg simulateBcg(const SimulationParameters& parameters);

/// Three minutes at 500 Hz, 8 channels, 15 uV RMS of 1/f noise, artifact of 60 to 100 uV, RMSSD 30 ms.
SimulationParameters healthyHeart(double beatsPerMinute, uint64_t seed);

/// What was found of the beats, and what was explained of the artifact.
struct CardiacScore {
  double sensitivity = 0;
  double positivePredictivity = 0;
  double delay = 0;          ///< seconds from the artifact's onset to the pulse, the median over beats
  double explained = 0;      ///< 1 - sum (artifact - estimate)^2 / sum artifact^2 over all channels
  double explainedLeast = 0; ///< of the channels, each by itself
  double explainedMost = 0;
};

/// Beats within 100 ms after one constant delay, inside the span of the pulses; the artifact between first
/// and last pulse. Channels without artifact are left out. `estimates` per channel.
CardiacScore scoreOf(const SimulatedBcg& recording, const std::vector<double>& pulses,
                     const std::vector<std::vector<double>>& estimates);

} // namespace emeg
