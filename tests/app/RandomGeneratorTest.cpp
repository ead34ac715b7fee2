#include "app/simulation/RandomGenerator.h"

#include <cmath>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using Purpose = RandomGenerator::Purpose;

TEST(RandomGenerator, TheSameSeedGivesTheSameNumbers) {
  RandomGenerator a(7, Purpose::Alpha, 3);
  RandomGenerator b(7, Purpose::Alpha, 3);
  for (int i = 0; i < 100; i++) EXPECT_EQ(a.nextBits(), b.nextBits());
  EXPECT_EQ(a.normal(), b.normal());
}

TEST(RandomGenerator, SeedPurposeAndIndexGiveDifferentStreams) {
  RandomGenerator reference(7, Purpose::Alpha, 3);
  const uint64_t first = reference.nextBits();
  EXPECT_NE(first, RandomGenerator(8, Purpose::Alpha, 3).nextBits());
  EXPECT_NE(first, RandomGenerator(7, Purpose::Drift, 3).nextBits());
  EXPECT_NE(first, RandomGenerator(7, Purpose::Alpha, 4).nextBits());
}

TEST(RandomGenerator, UniformNumbersFillTheUnitIntervalEvenly) {
  RandomGenerator random(1, Purpose::SensorNoise);
  constexpr int n = 100000;
  double sum = 0;
  double squares = 0;
  for (int i = 0; i < n; i++) {
    const double u = random.uniform();
    ASSERT_GE(u, 0);
    ASSERT_LT(u, 1);
    sum += u;
    squares += u * u;
  }
  EXPECT_NEAR(sum / n, 0.5, 0.005);
  EXPECT_NEAR(squares / n, 1.0 / 3, 0.005);
}

TEST(RandomGenerator, NormalNumbersHaveMeanZeroVarianceOneAndNormalTails) {
  RandomGenerator random(1, Purpose::SensorNoise, 5);
  constexpr int n = 200000;
  double sum = 0;
  double squares = 0;
  double fourthPowers = 0;
  int beyondTwo = 0;
  for (int i = 0; i < n; i++) {
    const double x = random.normal();
    sum += x;
    squares += x * x;
    fourthPowers += x * x * x * x;
    if (std::abs(x) > 2) beyondTwo++;
  }
  EXPECT_NEAR(sum / n, 0, 0.01);
  EXPECT_NEAR(squares / n, 1, 0.015);
  EXPECT_NEAR(fourthPowers / n, 3, 0.1);
  EXPECT_NEAR(static_cast<double>(beyondTwo) / n, 0.0455, 0.002);
}

TEST(RandomGenerator, SignsAreEvenlySpread) {
  RandomGenerator random(3, Purpose::GradientGain);
  double sum = 0;
  for (int i = 0; i < 10000; i++) {
    const double sign = random.sign();
    EXPECT_EQ(std::abs(sign), 1);
    sum += sign;
  }
  EXPECT_LT(std::abs(sum), 400);
}

} // namespace

} // namespace emeg
