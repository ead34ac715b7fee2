#include "artifacts/cardiac/known/PulseDelay.h"

#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/Energy.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t fewestBeats = 3;
constexpr double standsOut = 3; // energy of the average over that of the average of as much noise

/// A channel's average over beats from one period before them on, and how far it stands out.
struct AverageBeat {
  std::vector<double> values;
  double energyRatio = 0; ///< 1: what averaging noise leaves
};

/// Every beat is scaled to the same energy; beats that the series does not hold whole are left out.
AverageBeat averageBeat(const std::vector<double>& channel, int64_t length, const std::vector<double>& beats,
                        int64_t before, int64_t count) {
  AverageBeat average;
  average.values.assign(static_cast<size_t>(count), 0.0);
  double nrOfBeats = 0;
  for (const double beat : beats) {
    const int64_t first = static_cast<int64_t>(std::floor(beat)) - before;
    if (first < 0 || first + count > length) continue;
    const double* const samples = channel.data() + first;
    const double factor = normFactor(energyOf({samples, static_cast<size_t>(count)}));
    if (!(factor > 0)) continue;
    for (int64_t j = 0; j < count; ++j) average.values[static_cast<size_t>(j)] += factor * samples[j];
    ++nrOfBeats;
  }
  if (nrOfBeats >= fewestBeats) average.energyRatio = energyOf(average.values) / nrOfBeats;
  return average;
}

/// The first of the delays with the most weighted energy; `values` begin half a window before delay 0.
int32_t strongestDelay(const std::vector<double>& values, const std::vector<double>& weights,
                       int32_t nrOfDelays) {
  double best = -1;
  int32_t delay = 0;
  for (int32_t d = 0; d < nrOfDelays; ++d) {
    double energy = 0;
    for (size_t j = 0; j < weights.size(); ++j) {
      const double value = values[static_cast<size_t>(d) + j];
      energy += weights[j] * value * value;
    }
    if (energy > best) {
      best = energy;
      delay = d;
    }
  }
  return delay;
}

} // namespace

std::vector<int32_t> fitPulseDelays(const BcgSeries& series, const std::vector<double>& beats,
                                    int32_t heartPeriod) {
  std::vector<int32_t> delays(series.nrOfChannels(), 0);
  if (heartPeriod <= 0 || beats.size() < fewestBeats) return delays;
  const std::vector<double> weights = beatWeights(heartPeriod);
  const auto longest = static_cast<int32_t>(longestPulseDelay * static_cast<double>(series.rate));
  const int64_t count = static_cast<int64_t>(weights.size()) + longest;

  std::vector<int32_t> clearDelays;
  std::vector<bool> isClear(delays.size());
  for (size_t c = 0; c < delays.size(); ++c) {
    const AverageBeat average = averageBeat(series.channels[c], series.length, beats, heartPeriod, count);
    delays[c] = strongestDelay(average.values, weights, longest + 1);
    isClear[c] = average.energyRatio > standsOut;
    if (isClear[c]) clearDelays.push_back(delays[c]);
  }
  if (clearDelays.empty()) return delays;
  std::sort(clearDelays.begin(), clearDelays.end());
  for (size_t c = 0; c < delays.size(); ++c)
    if (!isClear[c]) delays[c] = clearDelays[clearDelays.size() / 2];
  return delays;
}

std::vector<double> delayedPulses(const std::vector<double>& beats, int32_t delay, int64_t length) {
  std::vector<double> pulses;
  for (const double beat : beats)
    if (beat + delay <= static_cast<double>(length - 1)) pulses.push_back(beat + delay);
  return pulses;
}

} // namespace emeg
