#include "artifacts/SinusoidRemoval.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double pi = 3.14159265358979323846;

std::vector<double> sinusoid(std::size_t n, double samplingInterval, double frequency, double amplitude,
                             double phase) {
  std::vector<double> signal(n);
  for (std::size_t i = 0; i < n; ++i) {
    signal[i] =
        amplitude * std::cos(2.0 * pi * frequency * samplingInterval * static_cast<double>(i) + phase);
  }
  return signal;
}

std::vector<double> noise(std::size_t n, uint64_t seed) {
  std::mt19937_64 generator(seed);
  std::vector<double> signal(n);
  for (double& x : signal) x = static_cast<double>(generator() >> 11) / 4503599627370496.0 - 1.0;
  return signal;
}

std::vector<double> cleaned(std::vector<double> channel, const std::vector<double>& frequencies,
                            double samplingInterval) {
  const SinusoidTables tables =
      prepareSinusoidTables(frequencies, samplingInterval, static_cast<int64_t>(channel.size()));
  removeSinusoids(channel.data(), static_cast<int64_t>(channel.size()), frequencies, samplingInterval,
                  tables.notchSpanLengths);
  return channel;
}

double largest(const std::vector<double>& signal) {
  double result = 0.0;
  for (const double x : signal) result = std::max(result, std::fabs(x));
  return result;
}

TEST(SinusoidRemoval, ASinusoidOfTheNotchFrequencyVanishes) {
  for (const double phase : {0.0, 0.7, 2.9}) {
    EXPECT_LT(largest(cleaned(sinusoid(1000, 0.001, 50.0, 30.0, phase), {50.0}, 0.001)), 1e-9);
  }
}

TEST(SinusoidRemoval, AFrequencyThatDividesTheChannelEvenlyUsesEverySample) {
  EXPECT_THAT(prepareSinusoidTables(std::vector<double>{50.0, 7.0, 1.0}, 0.001, 1000).notchSpanLengths,
              ElementsAre(1000, 1000, 1000));
}

TEST(SinusoidRemoval, TheSpanHoldsTheLargestWholeNumberOfPeriodsRoundedHalfUp) {
  // 1000 samples hold 16 periods of 62.5 samples, 14 of 1000/14.5, 3 of 300.
  EXPECT_THAT(
      prepareSinusoidTables(std::vector<double>{16.0, 14.5, 10.0 / 3.0}, 0.001, 1000).notchSpanLengths,
      ElementsAre(1000, 966, 900));
  // Five periods of 2.5 samples in 13: 12.5 is rounded up.
  EXPECT_THAT(prepareSinusoidTables(std::vector<double>{0.4}, 1.0, 13).notchSpanLengths, ElementsAre(13));
}

TEST(SinusoidRemoval, TheFitIsTheProjectionOverTheSpanAndTheWholeChannelIsCorrected) {
  const std::size_t n = 997;
  const double interval = 0.002;
  const double frequency = 13.7;
  const std::vector<double> channel = noise(n, 4);
  const std::vector<int32_t> spans =
      prepareSinusoidTables(std::vector<double>{frequency}, interval, static_cast<int64_t>(n))
          .notchSpanLengths;
  const std::size_t span = static_cast<std::size_t>(spans[0]);
  ASSERT_LT(span, n);

  double cosine = 0.0;
  double sine = 0.0;
  for (std::size_t j = 0; j < span; ++j) {
    cosine += channel[j] * std::cos(2.0 * pi * frequency * interval * static_cast<double>(j));
    sine += channel[j] * std::sin(2.0 * pi * frequency * interval * static_cast<double>(j));
  }
  cosine *= 2.0 / static_cast<double>(span);
  sine *= 2.0 / static_cast<double>(span);
  const std::vector<double> result = cleaned(channel, {frequency}, interval);
  for (std::size_t j = 0; j < n; ++j) {
    const double phase = 2.0 * pi * frequency * interval * static_cast<double>(j);
    EXPECT_NEAR(result[j], channel[j] - cosine * std::cos(phase) - sine * std::sin(phase), 1e-12);
  }
}

TEST(SinusoidRemoval, NotchesAreRemovedOneAfterTheOther) {
  const std::vector<double> channel = noise(800, 9);
  const std::vector<double> together = cleaned(channel, {50.0, 60.3}, 0.001);
  const std::vector<double> inTurn = cleaned(cleaned(channel, {50.0}, 0.001), {60.3}, 0.001);
  EXPECT_EQ(together, inTurn);
}

TEST(SinusoidRemoval, OtherFrequenciesStay) {
  const std::vector<double> other = sinusoid(1000, 0.001, 20.0, 10.0, 0.3);
  std::vector<double> mixed = sinusoid(1000, 0.001, 50.0, 30.0, 1.1);
  for (std::size_t i = 0; i < mixed.size(); ++i) mixed[i] += other[i];
  const std::vector<double> result = cleaned(mixed, {50.0}, 0.001);
  for (std::size_t i = 0; i < mixed.size(); ++i) EXPECT_NEAR(result[i], other[i], 1e-9);
}

TEST(SinusoidRemoval, AFrequencyWithoutAWholePeriodInTheChannelIsSkipped) {
  const std::vector<double> channel = noise(100, 2);
  EXPECT_THAT(prepareSinusoidTables(std::vector<double>{9.99}, 0.001, 100).notchSpanLengths, ElementsAre(0));
  EXPECT_EQ(cleaned(channel, {9.99}, 0.001), channel);
}

TEST(SinusoidRemoval, WithoutNotchesNothingHappens) {
  const SinusoidTables tables = prepareSinusoidTables({}, 0.001, 100);
  EXPECT_THAT(tables.notchSpanLengths, IsEmpty());
  EXPECT_THAT(tables.notchCosTables, IsEmpty());
  EXPECT_THAT(tables.notchSinTables, IsEmpty());
  const std::vector<double> channel = noise(100, 2);
  EXPECT_EQ(cleaned(channel, {}, 0.001), channel);
}

TEST(SinusoidRemoval, UnusableFrequenciesAreSkippedAndTheOthersRemoved) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  const double tiny = std::numeric_limits<double>::denorm_min();
  const std::vector<double> channel = noise(500, 6);
  for (const double frequency : {0.0, -50.0, nan, infinity, -infinity, tiny, 1e-300}) {
    EXPECT_THAT(prepareSinusoidTables(std::vector<double>{frequency}, 0.001, 500).notchSpanLengths,
                ElementsAre(0));
    EXPECT_EQ(cleaned(channel, {frequency}, 0.001), channel) << frequency;
    EXPECT_EQ(cleaned(channel, {frequency, 50.0}, 0.001), cleaned(channel, {50.0}, 0.001)) << frequency;
  }
  for (const double interval : {0.0, -0.001, nan, infinity}) {
    EXPECT_EQ(cleaned(channel, {50.0}, interval), channel) << interval;
  }
  EXPECT_EQ(cleaned(channel, {-50.0}, -0.001), channel);
}

TEST(SinusoidRemoval, AnUnusableFrequencyIsSkippedEvenWithASpanLength) {
  std::vector<double> channel = noise(50, 6);
  const std::vector<double> before = channel;
  removeSinusoids(channel.data(), 50,
                  std::vector<double>{std::numeric_limits<double>::quiet_NaN(), 0.0, -3.0}, 0.001,
                  std::vector<int32_t>{50, 50, 50});
  EXPECT_EQ(channel, before);
}

TEST(SinusoidRemoval, ASpanLongerThanTheChannelIsCutToIt) {
  std::vector<double> longSpan = noise(60, 1);
  std::vector<double> wholeChannel = longSpan;
  removeSinusoids(longSpan.data(), 60, std::vector<double>{50.0}, 0.001, std::vector<int32_t>{1000});
  removeSinusoids(wholeChannel.data(), 60, std::vector<double>{50.0}, 0.001, std::vector<int32_t>{60});
  EXPECT_EQ(longSpan, wholeChannel);
}

TEST(SinusoidRemoval, SpansNeverExceedALengthThatASingleFloatRoundsUp) {
  // As a 32-bit float 16777219 becomes 16777220.
  EXPECT_EQ(notchSpanLengthOf(0.5, 1.0, 16777219), 16777219);
  EXPECT_EQ(notchSpanLengthOf(0.5, 1.0, 16777216), 16777216);
  EXPECT_EQ(notchSpanLengthOf(0.5, 1.0, int64_t{1} << 40), std::numeric_limits<int32_t>::max());
}

TEST(SinusoidRemoval, TablesHoldTheCosineAndSineOfEveryTimePoint) {
  const SinusoidTables tables = prepareSinusoidTables(std::vector<double>{50.0, 0.0, 3.3}, 0.004, 77);
  ASSERT_EQ(tables.notchCosTables.size(), 3U);
  ASSERT_EQ(tables.notchSinTables.size(), 3U);
  EXPECT_THAT(tables.notchCosTables[1], IsEmpty());
  for (const std::size_t k : {0U, 2U}) {
    const double frequency = k == 0 ? 50.0 : 3.3;
    ASSERT_EQ(tables.notchCosTables[k].size(), 77U);
    ASSERT_EQ(tables.notchSinTables[k].size(), 77U);
    for (std::size_t j = 0; j < 77; ++j) {
      const double phase = 2.0 * pi * frequency * 0.004 * static_cast<double>(j);
      EXPECT_NEAR(tables.notchCosTables[k][j], std::cos(phase), 1e-12);
      EXPECT_NEAR(tables.notchSinTables[k][j], std::sin(phase), 1e-12);
    }
  }
}

TEST(SinusoidRemoval, AnEmptyChannelGivesEmptyTables) {
  const SinusoidTables tables = prepareSinusoidTables(std::vector<double>{50.0}, 0.001, 0);
  EXPECT_THAT(tables.notchSpanLengths, ElementsAre(0));
  EXPECT_THAT(tables.notchCosTables[0], IsEmpty());
  EXPECT_THAT(prepareSinusoidTables(std::vector<double>{50.0}, 0.001, -4).notchSpanLengths, ElementsAre(0));
  removeSinusoids(nullptr, 0, std::vector<double>{50.0}, 0.001, std::vector<int32_t>{10});
}

} // namespace
} // namespace emeg
