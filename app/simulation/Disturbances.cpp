#include "app/simulation/Disturbances.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace emeg {

namespace {

constexpr double decayTime = 0.001;    // seconds
constexpr double spikeDuration = 0.01; // seconds; the decay has reached 5e-5

} // namespace

Disturbances::Disturbances(const SimulationParameters& parameters)
    : samplingFrequency_(parameters.samplingFrequency), spikeUv_(parameters.disturbances.spikeUv),
      dropoutDuration_(parameters.disturbances.dropoutDuration) {
  RandomGenerator random(parameters.seed, RandomGenerator::Purpose::Disturbances);
  const auto draw = [&](int count, std::vector<double>& times) {
    for (int i = 0; i < count; i++) times.push_back(parameters.seconds * random.uniform(0.05, 0.95));
    std::sort(times.begin(), times.end());
  };
  draw(parameters.disturbances.nrOfSpikes, spikeTimes_);
  draw(parameters.disturbances.nrOfDropouts, dropoutTimes_);
}

bool Disturbances::isDroppedOut(double time) const {
  // All last equally long: the latest one that has begun ends last.
  const auto next = std::upper_bound(dropoutTimes_.begin(), dropoutTimes_.end(), time);
  return next != dropoutTimes_.begin() && time < *std::prev(next) + dropoutDuration_;
}

void Disturbances::addSpikes(int64_t first, std::span<double> samples) const {
  const auto count = static_cast<int64_t>(samples.size());
  for (const double time : spikeTimes_) {
    const auto begin = static_cast<int64_t>(std::ceil(time * samplingFrequency_));
    const auto end = static_cast<int64_t>(std::ceil((time + spikeDuration) * samplingFrequency_));
    for (int64_t i = std::max(begin, first); i < std::min(end, first + count); i++)
      samples[static_cast<size_t>(i - first)] +=
          spikeUv_ * std::exp(-(static_cast<double>(i) / samplingFrequency_ - time) / decayTime);
  }
}

} // namespace emeg
