#include "dsp/WindowedSinc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace emeg {
namespace {

/// I0 by its integral, (1/pi) times the integral of exp(x cos t) over 0 ... pi: the trapezoidal rule is exact
/// to rounding for periodic functions.
double besselByIntegral(double x) {
  constexpr int steps = 400;
  double sum = 0;
  for (int i = 0; i < steps; ++i) sum += std::exp(x * std::cos(2 * std::numbers::pi * i / steps));
  return sum / steps;
}

TEST(WindowedSinc, TheSineOfHalfTurnsIsRightToRounding) {
  for (int i = -4000; i <= 4000; ++i) {
    const double x = i / 512.0 + (i % 7) * 1e-4;
    const long double exact = std::sin(std::numbers::pi_v<long double> * static_cast<long double>(x));
    EXPECT_NEAR(sineOfHalfTurns(x), static_cast<double>(exact), 1e-15) << x;
  }
}

TEST(WindowedSinc, TheSineOfHalfTurnsLosesNothingFarAway) {
  for (const double x : {0.25, 0.5, 0.875, 1.25, -0.375})
    EXPECT_EQ(sineOfHalfTurns(x + 1048576), sineOfHalfTurns(x)) << x;
}

TEST(WindowedSinc, TheHammingWindowHasItsThreeKnownValues) {
  EXPECT_NEAR(hammingWindow(0), 1.0, 1e-15);
  EXPECT_NEAR(hammingWindow(0.5), 0.54, 1e-15);
  EXPECT_NEAR(hammingWindow(-1), 0.08, 1e-15);
}

TEST(WindowedSinc, TheKaiserSincIsTheProductOfTheSincAndTheBesselWindow) {
  const double cutoff = 0.045;
  const KaiserSinc kernel(cutoff, 0.01, 80);
  const double beta = 0.1102 * (80 - 8.7);
  for (double d = 0.13; d < kernel.halfWidth(); d += 3.7) {
    const double relative = d / kernel.halfWidth();
    const double expected = std::sin(2 * std::numbers::pi * cutoff * d) / (std::numbers::pi * d) *
                            besselByIntegral(beta * std::sqrt(1 - relative * relative)) /
                            besselByIntegral(beta);
    EXPECT_NEAR(kernel(d), expected, 1e-13) << d;
    EXPECT_EQ(kernel(-d), kernel(d));
  }
  EXPECT_NEAR(kernel(0), 2 * cutoff, 1e-15);
}

TEST(WindowedSinc, TheKaiserSincEndsAtItsHalfWidth) {
  const KaiserSinc kernel(0.2, 0.1, 60);
  EXPECT_NE(kernel(kernel.halfWidth() * 0.999), 0.0);
  EXPECT_EQ(kernel(kernel.halfWidth()), 0.0);
  EXPECT_EQ(kernel(-2 * kernel.halfWidth()), 0.0);
}

TEST(WindowedSinc, ScaledValuesSumToOne) {
  std::vector<double> values = {1, 2, 5};
  normaliseSum(values.data(), 3);
  EXPECT_EQ(values, (std::vector<double>{0.125, 0.25, 0.625}));
}

} // namespace
} // namespace emeg
