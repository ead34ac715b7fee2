#include "artifacts/gradient/timing/volumes/Autocorrelation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace emeg {
namespace {

std::vector<double> noise(size_t n) {
  std::mt19937_64 random(3);
  std::vector<double> values(n);
  for (double& value : values) value = static_cast<double>(random() >> 11) / 9007199254740992.0 - 0.5;
  return values;
}

TEST(Autocorrelation, AgreesWithItsDefinition) {
  const std::vector<double> signal = noise(700);
  const Autocorrelation correlation(signal, 650);
  for (const size_t lag : {0u, 1u, 17u, 350u, 650u}) {
    double cross = 0, head = 0, tail = 0;
    for (size_t i = 0; i + lag < signal.size(); i++) {
      cross += signal[i] * signal[i + lag];
      head += signal[i] * signal[i];
      tail += signal[i + lag] * signal[i + lag];
    }
    EXPECT_NEAR(correlation.at(static_cast<int64_t>(lag)), cross / std::sqrt(head * tail), 1e-10) << lag;
  }
}

TEST(Autocorrelation, DoesNotFallWithTheLag) {
  std::vector<double> signal = noise(100);
  for (size_t i = 100; i < 1000; i++) signal.push_back(signal[i - 100]);
  const Autocorrelation correlation(signal, 900);
  for (const int64_t lag : {100, 500, 900}) EXPECT_NEAR(correlation.at(lag), 1, 1e-9);
}

TEST(Autocorrelation, LeavesOutWhatMeetsADropout) {
  std::vector<double> signal = noise(100);
  for (size_t i = 100; i < 1000; i++) signal.push_back(signal[i - 100]);
  for (size_t i = 420; i < 480; i++) signal[i] = 0;
  const Autocorrelation correlation(signal, 900);
  for (const int64_t lag : {100, 300, 500}) EXPECT_NEAR(correlation.at(lag), 1, 1e-9);
}

TEST(Autocorrelation, FindsPeaksBetweenSamples) {
  std::vector<double> signal(4000);
  for (size_t i = 0; i < signal.size(); i++)
    signal[i] = std::sin(2 * 3.14159265358979 * static_cast<double>(i) / 12.34);
  const Autocorrelation correlation(signal, 200);
  EXPECT_NEAR(correlation.peakNear(123, 3).lag, 123.4, 0.01);
}

TEST(Autocorrelation, NoPeakAtTheLastLagsIsHigherThanItIs) {
  // 199.94 samples, so that the second repeat comes back just before the last lag.
  std::vector<double> signal(2000);
  for (size_t i = 0; i < signal.size(); i++)
    for (const double harmonic : {19, 23, 29, 31, 37, 41})
      signal[i] += std::sin(2 * 3.14159265358979 * harmonic * (static_cast<double>(i) / 199.94 + harmonic));
  const Autocorrelation correlation(signal, 400);
  const CorrelationPeak last = correlation.peakNear(399.9, 1);
  EXPECT_NEAR(last.lag, 399.88, 0.02);
  EXPECT_NEAR(last.value, 1, 1e-3);
}

TEST(Autocorrelation, OfNothingIsNothing) {
  const Autocorrelation correlation({}, 100);
  EXPECT_EQ(correlation.largestLag(), 0);
  EXPECT_TRUE(correlation.peaks(1, 0).empty());
}

} // namespace
} // namespace emeg
