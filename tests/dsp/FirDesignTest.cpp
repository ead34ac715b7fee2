#include "dsp/FirDesign.h"

#include "tests/dsp/reference/PlainFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace emeg {
namespace {

constexpr double stopLimit = 0.01; // 40 dB

double decibelsFromOne(double amplitude) {
  return std::abs(20 * std::log10(std::abs(amplitude)));
}

/// Largest deviation (0.1 dB and 40 dB are the limits) of dense amplitudes where a filter passes and stops.
struct Deviations {
  double passedDecibels = 0;
  double stoppedAmplitude = 0;
};

template <typename Passes, typename Stops>
Deviations deviationsOf(const std::vector<double>& taps, double rate, Passes passes, Stops stops) {
  const std::vector<double> amplitudes = reference::denseAmplitudes(taps);
  Deviations worst;
  for (std::size_t k = 0; k < amplitudes.size(); ++k) {
    const double f = rate / 2 * static_cast<double>(k) / static_cast<double>(amplitudes.size() - 1);
    if (passes(f)) worst.passedDecibels = std::max(worst.passedDecibels, decibelsFromOne(amplitudes[k]));
    if (stops(f)) worst.stoppedAmplitude = std::max(worst.stoppedAmplitude, std::abs(amplitudes[k]));
  }
  return worst;
}

void expectWithinLimits(const Deviations& worst, const std::string& what) {
  EXPECT_LT(worst.passedDecibels, 0.1) << what;
  EXPECT_LT(worst.stoppedAmplitude, stopLimit) << what;
}

void expectHalfAt(double edge, const std::vector<double>& taps, double rate, const std::string& what) {
  EXPECT_NEAR(reference::amplitudeAt(taps, edge / rate), 0.5, 0.01) << what << " at " << edge << " Hz";
}

std::string describe(const char* kind, double edge, double transition, double rate) {
  return std::string(kind) + " " + std::to_string(edge) + " Hz, transition " + std::to_string(transition) +
         " Hz, at " + std::to_string(rate) + " Hz";
}

void checkHighPass(double edge, double transition, double rate) {
  const std::string what = describe("high-pass", edge, transition, rate);
  const std::vector<double> taps = highPassTaps(edge, transition, rate);
  expectHalfAt(edge, taps, rate, what);
  expectWithinLimits(deviationsOf(
                         taps, rate, [&](double f) { return f >= edge + transition / 2; },
                         [&](double f) { return f <= edge - transition / 2; }),
                     what);
}

void checkLowPass(double edge, double transition, double rate) {
  const std::string what = describe("low-pass", edge, transition, rate);
  const std::vector<double> taps = lowPassTaps(edge, transition, rate);
  expectHalfAt(edge, taps, rate, what);
  expectWithinLimits(deviationsOf(
                         taps, rate, [&](double f) { return f <= edge - transition / 2; },
                         [&](double f) { return f >= edge + transition / 2; }),
                     what);
}

void checkBandStop(double low, double high, double transition, double rate) {
  const std::string what = describe("band-stop", low, transition, rate) + " to " + std::to_string(high);
  const std::vector<double> taps = bandStopTaps(low, high, transition, rate);
  expectHalfAt(low, taps, rate, what);
  expectHalfAt(high, taps, rate, what);
  EXPECT_LT(std::abs(reference::amplitudeAt(taps, (low + high) / 2 / rate)), stopLimit) << what;
  expectWithinLimits(deviationsOf(
                         taps, rate,
                         [&](double f) { return f <= low - transition / 2 || f >= high + transition / 2; },
                         [&](double f) { return f >= low + transition / 2 && f <= high - transition / 2; }),
                     what);
}

TEST(FirDesign, DefaultHighPassesKeepTheirLimitsOverTheWholeBand) {
  for (const double rate : {250.0, 512.0, 1000.0, 5000.0})
    for (const double edge : {0.1, 0.5, 1.0, 4.0, 40.0, 70.0, 100.0})
      checkHighPass(edge, defaultHighPassTransition(edge, rate), rate);
}

TEST(FirDesign, DefaultLowPassesKeepTheirLimitsOverTheWholeBand) {
  for (const double rate : {250.0, 512.0, 1000.0, 5000.0})
    for (const double edge : {0.5, 1.0, 8.0, 40.0, 70.0, 100.0, 124.0})
      checkLowPass(edge, defaultLowPassTransition(edge, rate), rate);
}

TEST(FirDesign, DefaultNotchesKeepTheirLimitsOverTheWholeBand) {
  for (const double rate : {250.0, 1000.0, 5000.0}) {
    for (const double width : {0.3, 1.0, 2.0, 4.0})
      checkBandStop(50 - width / 2, 50 + width / 2,
                    defaultBandStopTransition(50 - width / 2, 50 + width / 2, rate), rate);
    checkBandStop(98, 102, defaultBandStopTransition(98, 102, rate), rate);
  }
}

TEST(FirDesign, AnyTransitionThatIsTakenKeepsTheLimits) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> share(0.001, 0.999);
  for (int i = 0; i < 300; ++i) {
    const double rate = 1000 * share(random);
    const double edge = rate / 2 * share(random);
    const double widest = 2 * std::min(edge, rate / 2 - edge);
    const double transition = i % 5 == 0 ? widest : widest * std::max(0.02, share(random));
    checkLowPass(edge, transition, rate);
    checkHighPass(edge, transition, rate);
  }
}

TEST(FirDesign, AnyBandThatIsTakenKeepsTheLimits) {
  std::mt19937 random(12);
  std::uniform_real_distribution<double> share(0.01, 0.99);
  for (int i = 0; i < 300; ++i) {
    const double rate = 1000 * share(random);
    const double a = rate / 2 * share(random);
    const double b = rate / 2 * share(random);
    const double low = std::min(a, b);
    const double high = std::max(a, b);
    const double widest = std::min({high - low, 2 * low, rate - 2 * high});
    if (widest < rate / 2000) continue;
    checkBandStop(low, high, i % 5 == 0 ? widest : widest * std::max(0.05, share(random)), rate);
  }
}

TEST(FirDesign, FiltersOfAFewTapsKeepTheLimits) {
  for (double edge = 150; edge < 350; edge += 3.1)
    for (double transition = 120; transition <= 2 * std::min(edge, 500 - edge); transition += 3.7) {
      checkLowPass(edge, transition, 1000);
      checkHighPass(edge, transition, 1000);
    }
}

TEST(FirDesign, ABandAsNarrowAsItsTransitionIsStoppedInItsMiddle) {
  for (double low = 100; low < 330; low += 7.3)
    for (double width = 20; width <= 120; width += 3.1)
      if (width <= std::min(low, 500 - low - width)) checkBandStop(low, low + width, width, 1000);
}

TEST(FirDesign, TheTapsAreASincInAHammingWindowScaledToGainOne) {
  const double rate = 500;
  const double edge = 40;
  const std::vector<double> taps = lowPassTaps(edge, 10, rate);
  ASSERT_EQ(taps.size(), 165U);
  std::vector<double> expected(taps.size());
  double sum = 0;
  for (int n = 0; n < 165; ++n) {
    const double x = std::numbers::pi * 2 * edge / rate * (n - 82);
    const double window = 0.54 - 0.46 * std::cos(2 * std::numbers::pi * n / 164);
    expected[static_cast<std::size_t>(n)] = (n == 82 ? 1.0 : std::sin(x) / x) * window;
    sum += expected[static_cast<std::size_t>(n)];
  }
  for (std::size_t n = 0; n < taps.size(); ++n) EXPECT_NEAR(taps[n], expected[n] / sum, 1e-15) << n;
}

TEST(FirDesign, TapsAreSymmetricOddInNumberAndLastAtLeastTheStatedTime) {
  for (const double rate : {100.0, 250.0, 333.3, 5000.0})
    for (const double transition : {0.7, 1.0, 3.0, 10.0})
      for (const std::vector<double>& taps :
           {lowPassTaps(20, transition, rate), highPassTaps(20, transition, rate),
            bandStopTaps(20, 35, transition, rate)}) {
        EXPECT_EQ(taps.size() % 2, 1U);
        EXPECT_GE(static_cast<double>(taps.size()), 3.3 * rate / transition);
        EXPECT_LE(static_cast<double>(taps.size()), 3.3 * rate / transition + 6);
        EXPECT_TRUE(std::equal(taps.begin(), taps.end(), taps.rbegin()));
      }
}

TEST(FirDesign, AConstantPassesALowPassAndABandStopAndNotAHighPass) {
  EXPECT_NEAR(reference::amplitudeAt(lowPassTaps(30, 5, 500), 0), 1, 1e-13);
  EXPECT_NEAR(reference::amplitudeAt(bandStopTaps(48, 52, 1, 500), 0), 1, 1e-13);
  EXPECT_NEAR(reference::amplitudeAt(highPassTaps(0.1, 0.1, 5000), 0), 0, 1e-12);
}

TEST(FirDesign, DefaultTransitionsAreAQuarterOfTheEdgeOrTwoHertzWhereThereIsRoom) {
  EXPECT_EQ(defaultHighPassTransition(100, 5000), 25);
  EXPECT_EQ(defaultHighPassTransition(4, 5000), 2);
  EXPECT_EQ(defaultHighPassTransition(0.1, 5000), 0.1);
  EXPECT_EQ(defaultLowPassTransition(40, 250), 10);
  EXPECT_EQ(defaultLowPassTransition(5, 250), 2);
  EXPECT_EQ(defaultLowPassTransition(120, 250), 5);
}

TEST(FirDesign, TheDefaultNotchIsOneHertzOrAsNarrowAsTheBandNeeds) {
  EXPECT_EQ(defaultBandStopTransition(48, 52, 250), 1);
  EXPECT_EQ(defaultBandStopTransition(49.75, 50.25, 250), 0.5);
  EXPECT_EQ(defaultBandStopTransition(0.25, 2, 250), 0.25);
  EXPECT_EQ(defaultBandStopTransition(120, 124.5, 250), 0.5);
}

TEST(FirDesign, EdgesOutsideOfTheBandAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double edge : {nan, infinity, -infinity, -1.0, 0.0, 125.0, 126.0, 1e300}) {
    EXPECT_THROW(highPassTaps(edge, 1, 250), std::invalid_argument) << edge;
    EXPECT_THROW(lowPassTaps(edge, 1, 250), std::invalid_argument) << edge;
    EXPECT_THROW(bandStopTaps(edge, 60, 1, 250), std::invalid_argument) << edge;
    EXPECT_THROW(bandStopTaps(40, edge, 1, 250), std::invalid_argument) << edge;
    EXPECT_THROW(defaultHighPassTransition(edge, 250), std::invalid_argument) << edge;
    EXPECT_THROW(defaultLowPassTransition(edge, 250), std::invalid_argument) << edge;
    EXPECT_THROW(defaultBandStopTransition(edge, 60, 250), std::invalid_argument) << edge;
  }
  EXPECT_THROW(bandStopTaps(60, 40, 1, 250), std::invalid_argument);
  EXPECT_THROW(bandStopTaps(50, 50, 1, 250), std::invalid_argument);
}

TEST(FirDesign, RatesAndTransitionsThatMakeNoSenseAreRefused) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double rate : {nan, infinity, -250.0, 0.0})
    EXPECT_THROW(lowPassTaps(40, 1, rate), std::invalid_argument) << rate;
  for (const double transition : {nan, infinity, -1.0, 0.0, 80.1, 1e-300})
    EXPECT_THROW(lowPassTaps(40, transition, 250), std::invalid_argument) << transition;
  EXPECT_THROW(bandStopTaps(49, 51, 2.1, 250), std::invalid_argument);
}

TEST(FirDesign, ErrorsAreSentencesWithTheValueThatIsWrong) {
  try {
    lowPassTaps(130, 1, 250);
    FAIL();
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "A filter's edge must lie between 0 Hz and half the sampling rate, 125 Hz, "
                               "but is 130 Hz.");
  }
}

} // namespace
} // namespace emeg
