#include "artifacts/cardiac/DetectionSignal.h"

#include "artifacts/cardiac/BeatTemplate.h"
#include "artifacts/cardiac/BeatTracking.h"
#include "artifacts/cardiac/BeatWeights.h"
#include "dsp/Medians.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

std::vector<float> channelDetectionSignal(const double* channel, int64_t length, int32_t period,
                                          const std::vector<double>& weights,
                                          const std::vector<double>& beatTemplate) {
  constexpr int64_t blockLength = 1024; // keeps everything of a block in the nearest cache
  const int64_t taps = 2 * int64_t{period} + 1;
  const VectorKernels& kernels = vectorKernels();
  std::vector<float> signal(static_cast<size_t>(length), 0.0f);
  std::vector<double> squares(static_cast<size_t>(blockLength + taps - 1));
  std::array<double, blockLength> energies;
  std::array<double, blockLength> correlations;
  for (int64_t first = period; first < length - period; first += blockLength) {
    const int64_t count = std::min(blockLength, length - period - first);
    const double* const samples = channel + (first - period);
    std::transform(samples, samples + count + taps - 1, squares.begin(), [](double x) { return x * x; });
    kernels.slidingSum(squares.data(), taps, count, energies.data());
    kernels.slidingWeightedDot(samples, weights.data(), beatTemplate.data(), taps, count,
                               correlations.data());
    for (size_t k = 0; k < static_cast<size_t>(count); ++k)
      if (energies[k] > 0)
        signal[static_cast<size_t>(first) + k] =
            static_cast<float>(-correlations[k] / std::sqrt(energies[k]));
  }
  return signal;
}

std::vector<float> buildPulseDetectionSignal(const BcgSeries& series, const HeartPeriod& heart) {
  const auto energetic = [&](const auto& channel) { return hasEnergy(channel.data(), series.length); };
  if (heart.period <= 0 || std::none_of(series.channels.begin(), series.channels.end(), energetic)) return {};

  const std::vector<double> weights = beatWeights(heart.period);
  const std::vector<int32_t> beats = trackBeats(series, heart);
  std::vector<std::vector<float>> channelSignals;
  for (const std::vector<double>& channel : series.channels) {
    const std::vector<double> beatTemplate =
        makeBeatTemplate(channel.data(), series.length, beats, heart.period, weights);
    channelSignals.push_back(
        channelDetectionSignal(channel.data(), series.length, heart.period, weights, beatTemplate));
  }

  std::vector<float> signal(static_cast<size_t>(series.length));
  std::vector<double> values(series.nrOfChannels());
  for (size_t i = 0; i < signal.size(); ++i) {
    for (size_t c = 0; c < values.size(); ++c) values[c] = static_cast<double>(channelSignals[c][i]);
    signal[i] = static_cast<float>(sortMedian(values.data(), static_cast<int32_t>(values.size())));
  }
  return signal;
}

} // namespace emeg
