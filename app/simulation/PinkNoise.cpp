#include "app/simulation/PinkNoise.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace emeg {

namespace {

constexpr double lowestCornerHz = 0.2;
constexpr double cornerRatio = 4;

} // namespace

PinkNoise::PinkNoise(RandomGenerator random, double samplingFrequency) : random_(random) {
  double cornerHz = lowestCornerHz;
  for (size_t k = 0; k < nrOfCorners; k++, cornerHz *= cornerRatio) {
    pole_[k] = std::exp(-2 * std::numbers::pi * cornerHz / samplingFrequency);
    gain_[k] = (1 - pole_[k]) / std::sqrt(cornerHz);
  }

  double variance = 0;
  for (size_t i = 0; i < nrOfCorners; i++)
    for (size_t k = 0; k < nrOfCorners; k++) variance += gain_[i] * gain_[k] / (1 - pole_[i] * pole_[k]);
  const double scale = 1 / std::sqrt(variance);
  for (double& gain : gain_) gain *= scale;

  // Ten time constants of the slowest filter.
  const double settlingSeconds = 10 / (2 * std::numbers::pi * lowestCornerHz);
  const auto settlingSamples = static_cast<int64_t>(std::ceil(settlingSeconds * samplingFrequency));
  for (int64_t i = 0; i < settlingSamples; i++) next();
}

double PinkNoise::next() {
  const double white = random_.normal();
  double sum = 0;
  for (size_t k = 0; k < nrOfCorners; k++) {
    state_[k] = pole_[k] * state_[k] + gain_[k] * white;
    sum += state_[k];
  }
  return sum;
}

} // namespace emeg
