#include "app/simulation/LineNoise.h"

#include "app/simulation/RandomGenerator.h"

#include <cmath>
#include <numbers>

namespace emeg {

LineNoise::LineNoise(const SimulationParameters& parameters)
    : parameters_(parameters.lineNoise), samplingFrequency_(parameters.samplingFrequency) {
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RandomGenerator random(parameters.seed, RandomGenerator::Purpose::LinePhase, static_cast<uint64_t>(c));
    phases_.push_back(2 * std::numbers::pi * random.uniform());
  }
}

void LineNoise::add(int64_t first, int64_t count, std::span<double> samples) const {
  if (parameters_.frequencyHz <= 0) return;
  const auto length = static_cast<size_t>(count);
  for (size_t t = 0; t < length; t++) {
    const double time = static_cast<double>(first + static_cast<int64_t>(t)) / samplingFrequency_;
    const double angle = 2 * std::numbers::pi * parameters_.frequencyHz * time;
    for (size_t c = 0; c < phases_.size(); c++)
      samples[c * length + t] += parameters_.amplitudeUv * std::sin(angle + phases_[c]);
  }
}

} // namespace emeg
