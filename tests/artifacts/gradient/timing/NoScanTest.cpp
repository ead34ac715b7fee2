// What repeats itself in recordings without a scanner.

#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include "tests/artifacts/gradient/timing/AxesScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>

namespace emeg {
namespace {

constexpr double twoPi = 2 * std::numbers::pi;

/// Three channels of EEG with something added: microvolts at a time in seconds.
void expectNoScan(const std::function<double(double, std::mt19937_64&)>& added) {
  for (const double fs : {500.0, 1000.0}) {
    SCOPED_TRACE(fs);
    AxesScan nobody;
    nobody.fs = fs;
    nobody.seconds = 12;
    nobody.peakUv = 0;
    nobody.nrOfVolumes = 0;
    std::vector<std::vector<double>> channels = nobody.channels(3);
    std::mt19937_64 random(5);
    for (std::vector<double>& channel : channels)
      for (size_t i = 0; i < channel.size(); i++) channel[i] += added(static_cast<double>(i) / fs, random);
    const auto found = detectScansInChannels(
        [&](int channel, std::vector<double>& samples) { samples = channels[static_cast<size_t>(channel)]; },
        3, fs);
    EXPECT_TRUE(found.empty()) << found.front().nrOfVolumes << " x " << found.front().nrOfSlicesPerVolume
                               << " of " << found.front().volumeDuration / fs << " s";
  }
}

TEST(NoScan, IsFoundInEegWithAlphaRhythm) {
  expectNoScan([](double t, auto&) { return 60 * std::sin(twoPi * 10 * t) * (1 + 0.3 * std::sin(t)); });
}

TEST(NoScan, IsFoundInTheMains) {
  for (const double mains : {50.02, 59.98}) {
    expectNoScan([&](double t, auto&) { return 50 * std::sin(twoPi * mains * t); });
    expectNoScan([&](double t, auto&) {
      return 50 * std::sin(twoPi * mains * t) + 20 * std::sin(twoPi * 3 * mains * t + 1);
    });
  }
}

TEST(NoScan, IsFoundInMuscleActivity) {
  expectNoScan([](double t, std::mt19937_64& random) {
    std::normal_distribution<double> normal;
    return (std::fmod(t, 7) < 2 ? 40 : 3) * normal(random);
  });
}

TEST(NoScan, IsFoundInPacedHeartBeats) {
  expectNoScan([](double t, auto&) {
    const double u = std::fmod(t, 0.857) - 0.1;
    return 500 * std::exp(-0.5 * std::pow(u / 0.012, 2)) +
           80 * std::exp(-0.5 * std::pow((u - 0.2) / 0.05, 2));
  });
}

TEST(NoScan, IsFoundInPumpsAndVentilators) {
  expectNoScan([](double t, auto&) {
    const double u = std::fmod(t, 0.51);
    return 60 * std::sin(twoPi * 43 * u) * std::exp(-14 * u) +
           5 * std::sin(twoPi * 95 * u) * std::exp(-16 * u);
  });
  expectNoScan([](double t, auto&) {
    return 30 * std::sin(twoPi * 25 * t) + 15 * std::sin(twoPi * 75 * t) + 8 * std::sin(twoPi * 50 * t);
  });
  expectNoScan([](double t, auto&) {
    const double u = std::fmod(t, 4.0);
    return u < 1.6 ? 80 * std::sin(u * 1.96) : -30 * std::exp(-2 * (u - 1.6));
  });
}

TEST(NoScan, IsFoundInClicks) {
  expectNoScan([](double t, auto&) { return std::fmod(t, 1.0) < 0.002 ? 300.0 : 0.0; });
}

} // namespace
} // namespace emeg
