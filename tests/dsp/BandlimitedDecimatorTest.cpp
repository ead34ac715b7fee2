#include "dsp/BandlimitedDecimator.h"

#include "tests/dsp/SimdLevelTests.h"
#include "tests/dsp/reference/PlainFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

namespace emeg {
namespace {

std::vector<double> decimated(BandlimitedDecimator decimator, const std::vector<double>& x) {
  std::vector<double> out;
  decimator.add(x, out);
  decimator.finish(out);
  return out;
}

std::vector<double> decimatedInBlocks(BandlimitedDecimator decimator, const std::vector<double>& x,
                                      std::size_t longest, uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<std::size_t> length(0, longest);
  std::vector<double> out;
  for (std::size_t begin = 0; begin < x.size();) {
    const std::size_t count = std::min(length(random), x.size() - begin);
    const EdgedArray block({x.begin() + static_cast<std::ptrdiff_t>(begin),
                            x.begin() + static_cast<std::ptrdiff_t>(begin + count)},
                           0);
    decimator.add({block.data(), block.size()}, out);
    begin += count;
  }
  decimator.finish(out);
  return out;
}

/// Largest difference between a decimated sinusoid and `gain` times the sinusoid, away from the ends.
double largestError(double rate, double edge, double frequency, double gain) {
  const BandlimitedDecimator decimator(rate, edge);
  const auto samples = static_cast<std::size_t>(2 * decimator.halfLength() + 150 * decimator.step());
  const std::vector<double> out = decimated(decimator, reference::sinusoid(samples, frequency / rate, 0.7));
  double worst = 0;
  for (std::size_t k = 0; k < out.size(); ++k) {
    const int64_t position = static_cast<int64_t>(k) * decimator.step();
    if (position < decimator.halfLength() ||
        position >= static_cast<int64_t>(samples) - decimator.halfLength())
      continue;
    const double expected =
        gain * std::cos(2 * std::numbers::pi * frequency / rate * static_cast<double>(position) + 0.7);
    worst = std::max(worst, std::abs(out[k] - expected));
  }
  return worst;
}

const std::vector<double> filteredRates = {81, 100, 200, 250, 256, 499, 500, 512, 1000, 2048, 5000, 10000};

TEST(BandlimitedDecimator, FrequenciesUpTo30HzPassWithin0Point1DecibelsAndAreNotShifted) {
  for (const double rate : filteredRates)
    for (double f = 0; f <= 30; f += 1.25)
      EXPECT_LT(largestError(rate, 35, f, 1), 1 - reference::fromDecibels(-0.1)) << rate << ", " << f;
}

TEST(BandlimitedDecimator, FrequenciesFrom40HzOnAndTheirAliasesAre80DecibelsDown) {
  for (const double rate : filteredRates)
    for (int i = 0; i <= 50; ++i) {
      const double f = 40 + (rate / 2 - 40) * i / 50;
      EXPECT_LT(largestError(rate, 35, f, 0), 1e-4) << rate << ", " << f;
    }
}

TEST(BandlimitedDecimator, TheEdgeIsHalvedAndCanBeChosen) {
  EXPECT_LT(largestError(5000, 35, 35, 0.5), 0.005);
  EXPECT_LT(largestError(1000, 70, 70, 0.5), 0.005);
  EXPECT_LT(largestError(1000, 70, 60, 1), 1 - reference::fromDecibels(-0.1));
  EXPECT_LT(largestError(1000, 70, 80, 0), 1e-4);
}

TEST(BandlimitedDecimator, OutputsLieAStepApartFromTheFirstSampleOn) {
  for (const auto& [rate, step] : std::vector<std::pair<double, int64_t>>{
           {5000, 20}, {5120, 20}, {1000, 4}, {999, 3}, {500, 2}, {499, 1}, {250, 1}, {60, 1}}) {
    const BandlimitedDecimator decimator(rate);
    EXPECT_EQ(decimator.step(), step) << rate;
    EXPECT_EQ(decimator.outputRate(), rate / static_cast<double>(step));
    for (const std::size_t n : {1U, 19U, 20U, 21U, 5000U})
      EXPECT_EQ(decimated(decimator, std::vector<double>(n)).size(),
                (n + static_cast<std::size_t>(step) - 1) / static_cast<std::size_t>(step))
          << rate << ", " << n;
  }
}

TEST(BandlimitedDecimator, TheLengthsOfTheBlocksChangeNoBit) {
  for (const double rate : {60.0, 100.0, 500.0, 5000.0}) {
    const BandlimitedDecimator decimator(rate);
    for (const std::size_t n : {1U, 2U, 300U, 2999U, 50021U}) {
      const std::vector<double> x = unevenNoise(n, 31, 3);
      const std::vector<double> whole = decimated(decimator, x);
      for (const std::size_t longest : {1U, 3U, 700U, 20011U})
        EXPECT_TRUE(sameBits(decimatedInBlocks(decimator, x, longest, 32), whole))
            << rate << ", " << n << ", " << longest;
    }
  }
}

TEST(BandlimitedDecimator, OutputsAreThoseOfOneFilterOverTheContinuedSignal) {
  const double rate = 500;
  const BandlimitedDecimator decimator(rate);
  // The taps are what an impulse leaves, at even and at odd positions.
  const int64_t half = decimator.halfLength();
  std::vector<double> taps(static_cast<std::size_t>(2 * half + 1));
  for (const int64_t shift : {0, 1}) {
    std::vector<double> impulse(static_cast<std::size_t>(8 * half));
    const int64_t place = 4 * half + shift;
    impulse[static_cast<std::size_t>(place)] = 1;
    const std::vector<double> out = decimated(decimator, impulse);
    for (int64_t i = -half; i <= half; ++i)
      if ((place + i) % 2 == 0)
        taps[static_cast<std::size_t>(half + i)] = out[static_cast<std::size_t>((place + i) / 2)];
  }
  for (const std::size_t n : {1U, 2U, 57U, 200U, 3001U}) {
    const std::vector<double> x = reference::whiteNoise(n, 33);
    const std::vector<double> filtered = reference::firFilterPlainly(x, taps);
    const std::vector<double> out = decimated(decimator, x);
    for (std::size_t k = 0; k < out.size(); ++k)
      EXPECT_NEAR(out[k], filtered[2 * k], 1e-13) << n << ", " << k;
  }
}

TEST(BandlimitedDecimator, ADriftStaysADriftUpToBothEnds) {
  std::vector<double> x(20000);
  std::iota(x.begin(), x.end(), 100.0);
  const std::vector<double> out = decimated(BandlimitedDecimator(5000), x);
  for (std::size_t k = 0; k < out.size(); ++k) EXPECT_NEAR(out[k], x[20 * k], 1e-8);
}

TEST(BandlimitedDecimator, RecordingsWithoutHigherFrequenciesAreTakenAsTheyAre) {
  const std::vector<double> x = reference::whiteNoise(500, 34);
  for (const double rate : {1.0, 50.0, 79.0, 80.0})
    EXPECT_TRUE(sameBits(decimated(BandlimitedDecimator(rate), x), x)) << rate;
}

TEST(BandlimitedDecimator, AnotherChannelFollowsTheEndOfTheFirst) {
  const std::vector<double> a = reference::whiteNoise(9000, 35);
  const std::vector<double> b = reference::whiteNoise(7000, 36);
  BandlimitedDecimator decimator(1000);
  std::vector<double> outA;
  std::vector<double> outB;
  decimator.add(a, outA);
  decimator.finish(outA);
  decimator.add(b, outB);
  decimator.finish(outB);
  EXPECT_TRUE(sameBits(outB, decimated(BandlimitedDecimator(1000), b)));
}

TEST(BandlimitedDecimator, NothingBecomesNothing) {
  EXPECT_TRUE(decimated(BandlimitedDecimator(5000), {}).empty());
}

TEST(BandlimitedDecimator, OutputsComeAsSoonAsTheirSamplesAreThere) {
  BandlimitedDecimator decimator(5000);
  std::vector<double> out;
  decimator.add(std::vector<double>(static_cast<std::size_t>(decimator.halfLength())), out);
  EXPECT_EQ(out.size(), 0U);
  decimator.add(std::vector<double>(1), out);
  EXPECT_EQ(out.size(), 1U);
  decimator.add(std::vector<double>(40), out);
  EXPECT_EQ(out.size(), 3U);
}

TEST(BandlimitedDecimator, RatesAndEdgesThatMakeNoSenseAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double rate : {nan, infinity, -infinity, 0.0, -250.0, 1e7})
    EXPECT_THROW(BandlimitedDecimator{rate}, std::invalid_argument) << rate;
  for (const double edge : {nan, infinity, -1.0, 0.0, 101.0, 1e-9})
    EXPECT_THROW(BandlimitedDecimator(1000, edge), std::invalid_argument) << edge;
}

} // namespace
} // namespace emeg
