#include "app/simulation/HeartBeats.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double breathHz = 0.25;
constexpr double memory = 0.8;           // of the autoregressive part, from beat to beat
constexpr double breathShare = 4.0 / 9;  // of the squared successive differences
constexpr double leadSeconds = 5;        // beats before the recording, so that its start is no special place
constexpr double shortestInterval = 0.6; // of the mean interval
constexpr double longestInterval = 1.5;
constexpr double leastPrematurity = 0.25; // of an ectopic beat's interval
constexpr double mostPrematurity = 0.35;

/// Moves some beats forward. The beat behind an ectopic one is never ectopic: for a share s of all beats, one
/// that may be ectopic must be so with the probability s / (1 - s).
void makeEctopic(double share, RandomGenerator random, HeartBeats& beats) {
  const double probability = share / (1 - share);
  for (size_t i = 0; i + 1 < beats.times.size(); i++) {
    if (random.uniform() >= probability) continue;
    const double advance = random.uniform(leastPrematurity, mostPrematurity) * beats.intervals[i];
    beats.times[i] -= advance;
    beats.intervals[i] -= advance;
    beats.intervals[i + 1] += advance;
    beats.ectopic.push_back(i);
    i++;
  }
}

} // namespace

double breathPhase(double time) {
  return 2 * std::numbers::pi * breathHz * time;
}

HeartBeats HeartBeats::draw(const HeartParameters& parameters, uint64_t seed, double seconds) {
  RandomGenerator random(seed, RandomGenerator::Purpose::HeartBeats);
  const double mean = 60 / parameters.beatsPerMinute;
  const double meanSquare = parameters.rmssd * parameters.rmssd;

  // Successive differences of a sinusoid of amplitude A sampled once a beat have the mean square
  // 2 A^2 sin^2(pi f mean); those of a first-order process of variance s^2 and memory m have 2 s^2 (1 - m).
  const double step = std::sin(std::numbers::pi * breathHz * mean);
  const double breathAmplitude = std::sqrt(breathShare * meanSquare / 2) / std::max(0.1, std::abs(step));
  const double spread = std::sqrt((1 - breathShare) * meanSquare / (2 * (1 - memory)));
  const double kick = spread * std::sqrt(1 - memory * memory);
  const double breathStart = 2 * std::numbers::pi * random.uniform();

  HeartBeats beats;
  double deviation = spread * random.normal();
  double time = -leadSeconds - mean * random.uniform();
  while (time < seconds + mean) {
    const double breath = breathAmplitude * std::sin(breathPhase(time) + breathStart);
    const double interval =
        std::clamp(mean + deviation + breath, shortestInterval * mean, longestInterval * mean);
    time += interval;
    beats.times.push_back(time);
    beats.intervals.push_back(interval);
    deviation = memory * deviation + kick * random.normal();
  }
  if (parameters.ectopicShare > 0)
    makeEctopic(parameters.ectopicShare, RandomGenerator(seed, RandomGenerator::Purpose::EctopicBeats),
                beats);
  return beats;
}

} // namespace emeg
