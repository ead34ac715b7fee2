#include "artifacts/gradient/timing/volumes/Periodicity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace emeg {
namespace {

constexpr double fs = 1000;

/// Sinusoids of random frequencies from 40 to 200 Hz, an artifact's waveform between samples.
class Waveform {
public:
  explicit Waveform(uint64_t seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> frequency(40, 200), phase(0, 2 * std::numbers::pi);
    for (int k = 0; k < 60; k++) parts_.push_back({frequency(random), phase(random)});
  }
  double at(double seconds) const {
    double sum = 0;
    for (const auto& [frequency, phase] : parts_)
      sum += std::sin(2 * std::numbers::pi * frequency * seconds + phase);
    return sum;
  }

private:
  struct Part {
    double frequency, phase;
  };
  std::vector<Part> parts_;
};

TEST(Periodicity, ThePeriodIsNoMultipleOfTheVolumeAtTheLongestLag) {
  // Ten volumes of 2 s and a clock that is fast by 30 ppm: just below the longest period looked for.
  const double volume = 2 * fs * (1 - 30e-6);
  const Waveform waveform(1);
  std::mt19937_64 random(2);
  std::normal_distribution<double> noise(0, 0.3);
  std::vector<double> signal(static_cast<size_t>(60 * fs));
  for (size_t i = 0; i < signal.size(); i++) {
    const double inVolume = std::fmod(static_cast<double>(i), volume) / fs;
    const double fade = std::clamp(std::min(inVolume, 1.6 - inVolume) * 100, 0.0, 1.0);
    signal[i] = fade * waveform.at(inVolume) + noise(random);
  }
  const std::vector<Period> periods = findPeriods(signal, fs, false);
  ASSERT_FALSE(periods.empty());
  EXPECT_NEAR(periods.front().samples, volume, 0.1);
  EXPECT_LE(periods.front().similarity, 1);
}

} // namespace
} // namespace emeg
