#include "app/simulation/AmplitudeDrift.h"

#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double shortestPeriod = 30; // seconds
constexpr double longestPeriod = 120;
constexpr int nrOfRulerPoints = 4096;

} // namespace

AmplitudeDrift::AmplitudeDrift(RandomGenerator random, double rms, double start, double duration) {
  for (Wave& wave : waves_) {
    const double period = shortestPeriod * std::pow(longestPeriod / shortestPeriod, random.uniform());
    wave = {2 * std::numbers::pi / period, random.uniform(0.5, 1), 2 * std::numbers::pi * random.uniform()};
  }

  double sum = 0;
  double squares = 0;
  for (int i = 0; i < nrOfRulerPoints; i++) {
    const double value = waves(start + duration * (i + 0.5) / nrOfRulerPoints);
    sum += value;
    squares += value * value;
  }
  mean_ = sum / nrOfRulerPoints;
  const double variance = squares / nrOfRulerPoints - mean_ * mean_;
  scale_ = variance > 0 ? rms / std::sqrt(variance) : 0;
}

double AmplitudeDrift::waves(double time) const {
  double sum = 0;
  for (const Wave& wave : waves_) sum += wave.amplitude * std::sin(wave.angularFrequency * time + wave.phase);
  return sum;
}

double AmplitudeDrift::factor(double time) const {
  return 1 + scale_ * (waves(time) - mean_);
}

} // namespace emeg
