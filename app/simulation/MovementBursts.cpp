#include "app/simulation/MovementBursts.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

using Purpose = RandomGenerator::Purpose;

constexpr double shortestBurst = 1; // seconds
constexpr double longestBurst = 3;
constexpr double lowestHz = 0.5;
constexpr double highestHz = 8;
constexpr double smallestGain = 0.2; // of the channel that sees most
constexpr double twoPi = 2 * std::numbers::pi;

/// A burst somewhere in the stretch from `start` on. Every wave has a band of its own, the bands equally wide
/// on a logarithmic scale, so that no burst lacks the low or the high frequencies.
MovementBursts::Burst drawBurst(RandomGenerator& random, double start, double room) {
  MovementBursts::Burst burst;
  burst.duration = random.uniform(shortestBurst, longestBurst);
  burst.onset = start + random.uniform(0, room - burst.duration);
  for (size_t k = 0; k < MovementBursts::nrOfWaves; k++) {
    const double position = (static_cast<double>(k) + random.uniform()) / MovementBursts::nrOfWaves;
    MovementBursts::Wave& wave = burst.waves[k];
    wave.frequency = lowestHz * std::pow(highestHz / lowestHz, position);
    wave.phase = twoPi * random.uniform();
    wave.amplitude = random.uniform(0.5, 1);
  }

  double largest = 0;
  for (int millisecond = 1; millisecond < burst.duration * 1000; millisecond++)
    largest = std::max(largest, std::abs(burst.value(burst.onset + millisecond * 0.001)));
  for (MovementBursts::Wave& wave : burst.waves) wave.amplitude /= largest;
  return burst;
}

} // namespace

double MovementBursts::Burst::value(double time) const {
  const double sinceOnset = time - onset;
  if (sinceOnset <= 0 || sinceOnset >= duration) return 0;
  double sum = 0;
  for (const Wave& wave : waves)
    sum += wave.amplitude * std::sin(twoPi * wave.frequency * sinceOnset + wave.phase);
  return sum * 0.5 * (1 - std::cos(twoPi * sinceOnset / duration));
}

int64_t mostMovementBursts(double seconds) {
  return static_cast<int64_t>(std::floor(seconds / longestBurst));
}

MovementBursts::MovementBursts(const SimulationParameters& parameters)
    : samplingFrequency_(parameters.samplingFrequency) {
  const int64_t nrOfBursts = parameters.movement->nrOfBursts;
  const double room = parameters.seconds / static_cast<double>(nrOfBursts);
  RandomGenerator random(parameters.seed, Purpose::Movement);
  for (int64_t i = 0; i < nrOfBursts; i++)
    bursts_.push_back(drawBurst(random, static_cast<double>(i) * room, room));

  double largest = 0;
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RandomGenerator channel(parameters.seed, Purpose::MovementGain, static_cast<uint64_t>(c));
    const double gain = channel.uniform(smallestGain, 1) * channel.sign();
    channelPeaks_.push_back(parameters.isDead(c) ? 0 : gain);
    largest = std::max(largest, std::abs(channelPeaks_.back()));
  }
  if (largest > 0)
    for (double& peak : channelPeaks_) peak *= parameters.movement->peakUv / largest;
}

void MovementBursts::add(int64_t first, int64_t count, std::span<double> samples) const {
  for (const Burst& burst : bursts_) {
    const auto begin = static_cast<int64_t>(std::ceil(burst.onset * samplingFrequency_));
    const auto end = static_cast<int64_t>(std::floor((burst.onset + burst.duration) * samplingFrequency_));
    for (int64_t i = std::max(begin, first); i <= std::min(end, first + count - 1); i++) {
      const double value = burst.value(static_cast<double>(i) / samplingFrequency_);
      for (size_t c = 0; c < channelPeaks_.size(); c++)
        samples[c * static_cast<size_t>(count) + static_cast<size_t>(i - first)] += channelPeaks_[c] * value;
    }
  }
}

} // namespace emeg
