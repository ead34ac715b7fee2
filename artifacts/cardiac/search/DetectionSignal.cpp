#include "artifacts/cardiac/search/DetectionSignal.h"

#include "artifacts/cardiac/search/BeatTemplate.h"
#include "artifacts/cardiac/search/BeatTracking.h"
#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/WindowSums.h"
#include "dsp/Medians.h"
#include "dsp/VectorKernels.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

namespace {

/// A channel's detection signal block by block. Correlations with one weighted template and energies that
/// slide round differently than the plain sums; where that could show in a 32-bit float, the plain sums are
/// taken.
class TemplateCorrelation {
public:
  TemplateCorrelation(const std::vector<double>& weights, const std::vector<double>& beatTemplate)
      : weights_(weights), template_(beatTemplate), taps_(static_cast<int64_t>(weights.size())),
        squares_(static_cast<size_t>(blockLength + taps_ - 1)), scratch_(squares_.size()) {
    double energy = 0;
    for (size_t i = 0; i < weights.size(); ++i) {
      weightedTemplate_.push_back(weights[i] * beatTemplate[i]);
      energy += weightedTemplate_[i] * weightedTemplate_[i];
    }
    rounding_ = relativeRounding * static_cast<double>(taps_);
    templateNorm_ = std::sqrt(energy);
  }

  static constexpr int64_t blockLength = 1024; // keeps everything of a block in the nearest cache

  /// The signal at `count` successive samples; `samples` begins half a template in front of the first.
  void fill(const double* samples, int64_t count, float* signal) {
    std::transform(samples, samples + count + taps_ - 1, squares_.begin(), [](double x) { return x * x; });
    windowSums(squares_.data(), taps_, count, energies_.data(), scratch_.data());
    vectorKernels().slidingDot(samples, weightedTemplate_.data(), taps_, count, correlations_.data());
    for (int64_t k = 0; k < count; ++k) {
      const double value =
          -correlations_[static_cast<size_t>(k)] / std::sqrt(energies_[static_cast<size_t>(k)]);
      const double error = rounding_ * (templateNorm_ + std::abs(value));
      const auto lowest = static_cast<float>(value - error);
      // Also where the value is not a number: a flat stretch.
      signal[k] = lowest == static_cast<float>(value + error) ? lowest : plainValue(samples + k);
    }
  }

private:
  /// Rounding of a sum, relative to the number of its terms: generously above what was ever seen.
  static constexpr double relativeRounding = 1e-15;

  float plainValue(const double* samples) const {
    double correlation = 0;
    double energy = 0;
    for (size_t i = 0; i < weights_.size(); ++i) {
      correlation += -samples[i] * weights_[i] * template_[i];
      energy += samples[i] * samples[i];
    }
    return energy > 0 ? static_cast<float>(correlation / std::sqrt(energy)) : 0.0f;
  }

  const std::vector<double>& weights_;
  const std::vector<double>& template_;
  int64_t taps_;
  std::vector<double> weightedTemplate_;
  double rounding_ = 0;
  double templateNorm_ = 0;
  std::vector<double> squares_, scratch_;
  std::array<double, blockLength> energies_{};
  std::array<double, blockLength> correlations_{};
};

} // namespace

std::vector<float> channelDetectionSignal(const double* channel, int64_t length, int32_t period,
                                          const std::vector<double>& weights,
                                          const std::vector<double>& beatTemplate) {
  constexpr int64_t blockLength = TemplateCorrelation::blockLength;
  TemplateCorrelation correlation(weights, beatTemplate);
  std::vector<float> signal(static_cast<size_t>(length), 0.0f);
  for (int64_t first = period; first < length - period; first += blockLength)
    correlation.fill(channel + (first - period), std::min(blockLength, length - period - first),
                     signal.data() + first);
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
