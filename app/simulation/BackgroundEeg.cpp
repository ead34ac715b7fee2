#include "app/simulation/BackgroundEeg.h"

#include "app/simulation/Electrodes.h"

#include <cmath>

namespace emeg {

namespace {

using Purpose = RandomGenerator::Purpose;

/// Part of a channel's background power that comes from sources shared with the other channels.
constexpr double sharedPower = 0.6;

} // namespace

BackgroundEeg::BackgroundEeg(const EegParameters& parameters, uint64_t seed, int nrOfChannels,
                             double samplingFrequency)
    : parameters_(parameters), left_(RandomGenerator(seed, Purpose::Alpha, 0), samplingFrequency),
      right_(RandomGenerator(seed, Purpose::Alpha, 1), samplingFrequency) {
  for (uint64_t s = 0; s < nrOfSharedSources; s++)
    shared_.emplace_back(RandomGenerator(seed, Purpose::SharedBackground, s), samplingFrequency);

  for (int c = 0; c < nrOfChannels; c++) {
    const auto index = static_cast<uint64_t>(c);
    Channel channel{PinkNoise(RandomGenerator(seed, Purpose::OwnBackground, index), samplingFrequency),
                    RandomGenerator(seed, Purpose::SensorNoise, index)};
    RandomGenerator weights(seed, Purpose::BackgroundWeights, index);
    double norm = 0;
    for (double& weight : channel.sharedWeights) {
      weight = weights.normal();
      norm += weight * weight;
    }
    const double scale = parameters.backgroundRmsUv * std::sqrt(sharedPower / norm);
    for (double& weight : channel.sharedWeights) weight *= scale;

    const std::string name = electrodeName(c);
    const double alphaUv = parameters.alphaPeakUv * alphaWeightOf(name);
    channel.alphaLeft = alphaUv * leftShareOf(name);
    channel.alphaRight = alphaUv - channel.alphaLeft;
    channels_.push_back(channel);
  }
}

void BackgroundEeg::next(int64_t count, std::span<double> samples) {
  const auto length = static_cast<size_t>(count);
  sources_.resize((nrOfSharedSources + 2) * length);
  const double* leftAlpha = sources_.data() + nrOfSharedSources * length;
  const double* rightAlpha = leftAlpha + length;
  for (size_t s = 0; s < nrOfSharedSources; s++)
    for (size_t t = 0; t < length; t++) sources_[s * length + t] = shared_[s].next();
  for (size_t t = 0; t < length; t++) {
    sources_[nrOfSharedSources * length + t] = left_.next();
    sources_[(nrOfSharedSources + 1) * length + t] = right_.next();
  }

  const double ownUv = parameters_.backgroundRmsUv * std::sqrt(1 - sharedPower);
  for (size_t c = 0; c < channels_.size(); c++) {
    Channel& channel = channels_[c];
    for (size_t t = 0; t < length; t++) {
      double value = ownUv * channel.own.next() + parameters_.sensorNoiseRmsUv * channel.sensorNoise.normal();
      for (size_t s = 0; s < nrOfSharedSources; s++)
        value += channel.sharedWeights[s] * sources_[s * length + t];
      value += channel.alphaLeft * leftAlpha[t] + channel.alphaRight * rightAlpha[t];
      samples[c * length + t] = value;
    }
  }
}

} // namespace emeg
