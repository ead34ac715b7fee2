#include "dsp/FirFilter.h"

#include "dsp/FirDesign.h"
#include "tests/dsp/SimdLevelTests.h"
#include "tests/dsp/reference/PlainFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vector>

namespace emeg {
namespace {

/// Symmetric taps without any other order.
std::vector<double> randomTaps(std::size_t count, uint32_t seed) {
  std::vector<double> taps = reference::whiteNoise(count, seed);
  for (std::size_t i = 0; i < count / 2; ++i) taps[count - 1 - i] = taps[i];
  return taps;
}

double largest(const std::vector<double>& x) {
  double most = 0;
  for (const double value : x) most = std::max(most, std::abs(value));
  return most;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double most = a.size() == b.size() ? 0 : std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) most = std::max(most, std::abs(a[i] - b[i]));
  return most;
}

/// The recording filtered in stretches of random lengths up to `longest`, each of which holds what inputFor
/// asks for and nothing else.
std::vector<double> filteredInStretches(const FirFilter& filter, const std::vector<double>& x,
                                        int64_t longest, uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int64_t> length(1, longest);
  const auto n = static_cast<int64_t>(x.size());
  std::vector<double> out(x.size());
  for (int64_t begin = 0; begin < n;) {
    const PositionRange outputs{begin, std::min(n, begin + length(random))};
    const PositionRange input = filter.inputFor(outputs, n);
    const EdgedArray held({x.begin() + input.begin, x.begin() + input.end}, 0);
    filter.apply(
        {{held.data(), held.size()}, input.begin, n}, outputs,
        std::span(out).subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(outputs.length())));
    begin = outputs.end;
  }
  return out;
}

TEST(FirFilter, AgreesWithTheSumThatDefinesItAtEveryLength) {
  for (const std::size_t taps : {1U, 3U, 33U, 127U, 129U, 501U, 1025U, 2049U})
    for (const std::size_t samples : {1U, 2U, 7U, 400U, 5003U}) {
      const FirFilter filter(randomTaps(taps, 1));
      const std::vector<double> x = reference::whiteNoise(samples, 2);
      const std::vector<double> expected = reference::firFilterPlainly(x, filter.taps());
      EXPECT_LT(largestDifference(filter.apply(x), expected), 1e-12 * largest(expected))
          << taps << " taps, " << samples << " samples";
    }
}

TEST(FirFilter, AgreesWithTheSumThatDefinesItFor1650001Taps) {
  const FirFilter filter(highPassTaps(0.01, 0.01, 5000));
  ASSERT_EQ(filter.taps().size(), 1650001U);
  std::vector<double> x = reference::whiteNoise(20000, 3);
  for (double& value : x) value += 100;
  const std::vector<double> filtered = filter.apply(x);
  for (const std::size_t p : {0U, 1U, 777U, 10000U, 19999U})
    EXPECT_NEAR(filtered[p], reference::filteredSample(x, filter.taps(), static_cast<int64_t>(p)), 1e-10)
        << p;
}

TEST(FirFilter, CuttingTheRecordingChangesNoBit) {
  for (const std::size_t taps : {1U, 33U, 127U, 129U, 501U, 2049U}) {
    const FirFilter filter(randomTaps(taps, 4));
    const std::vector<double> x = unevenNoise(20011, 5, 3);
    const std::vector<double> whole = filter.apply(x);
    EXPECT_TRUE(sameBits(filteredInStretches(filter, x, 4001, 6), whole)) << taps;
    EXPECT_TRUE(sameBits(filteredInStretches(filter, x, 301, 7), whole)) << taps;
  }
}

TEST(FirFilter, CuttingAShortRecordingChangesNoBit) {
  const FirFilter filter(randomTaps(2049, 8));
  for (const std::size_t samples : {1U, 2U, 100U, 1500U}) {
    const std::vector<double> x = reference::whiteNoise(samples, 9);
    EXPECT_TRUE(sameBits(filteredInStretches(filter, x, 37, 10), filter.apply(x))) << samples;
  }
}

TEST(FirFilter, StretchesThatAreWholeBlocksNeedNoMoreThanHalfTheFilter) {
  const FirFilter filter(randomTaps(501, 11));
  const int64_t block = filter.blockLength();
  const PositionRange input = filter.inputFor({2 * block, 5 * block}, 100 * block);
  EXPECT_EQ(input.begin, 2 * block - 250);
  EXPECT_EQ(input.end, 5 * block + 250);
  EXPECT_EQ(FirFilter(randomTaps(33, 12)).blockLength(), 1);
}

TEST(FirFilter, ASinusoidIsScaledByTheResponseAndNotShifted) {
  const double rate = 500;
  for (const std::vector<double>& taps :
       {highPassTaps(1, 1, rate), lowPassTaps(40, 10, rate), bandStopTaps(48, 52, 1, rate)}) {
    const FirFilter filter(taps);
    for (const double f : {0.3, 1.0, 1.4, 10.0, 37.0, 40.0, 47.7, 48.0, 50.0, 51.8, 90.0, 203.0}) {
      const std::vector<double> x = reference::sinusoid(6000, f / rate, 0.4);
      const std::vector<double> filtered = filter.apply(x);
      const double amplitude = reference::amplitudeAt(taps, f / rate);
      for (std::size_t i = 1000; i < 5000; ++i) EXPECT_NEAR(filtered[i], amplitude * x[i], 1e-12) << f;
    }
  }
}

TEST(FirFilter, FiltersInARowActAsIfEachWereAlone) {
  const double rate = 1000;
  const std::vector<std::vector<double>> designs = {
      highPassTaps(0.5, 0.5, rate), lowPassTaps(55, 13.75, rate), bandStopTaps(48, 52, 1, rate)};
  for (const double f : {0.4, 0.5, 0.6, 10.0, 47.9, 48.2, 51.9, 55.0, 60.0}) {
    const std::size_t edge = 6000;
    std::vector<double> x = reference::sinusoid(30000, f / rate);
    double expected = 1;
    for (const std::vector<double>& taps : designs) {
      x = FirFilter(taps).apply(x);
      expected *= reference::amplitudeAt(taps, f / rate);
    }
    for (std::size_t i = edge; i < x.size() - edge; i += 101)
      EXPECT_NEAR(x[i], expected * std::cos(2 * std::numbers::pi * f / rate * static_cast<double>(i)), 1e-9)
          << f;
  }
}

TEST(FirFilter, ASymmetricSignalStaysSymmetric) {
  for (const std::size_t taps : {33U, 2001U}) {
    std::vector<double> x = reference::whiteNoise(6001, 13);
    for (std::size_t i = 0; i < x.size() / 2; ++i) x[x.size() - 1 - i] = x[i];
    const std::vector<double> filtered = FirFilter(randomTaps(taps, 14)).apply(x);
    const std::vector<double> reversed(filtered.rbegin(), filtered.rend());
    EXPECT_LT(largestDifference(filtered, reversed), 1e-12 * largest(filtered)) << taps;
  }
}

TEST(FirFilter, AnImpulseBecomesTheTapsAroundIt) {
  for (const double transition : {20.0, 1.0}) {
    const std::vector<double> taps = lowPassTaps(40, transition, 250);
    std::vector<double> x(4000);
    x[1777] = 1;
    const std::vector<double> filtered = FirFilter(taps).apply(x);
    const std::size_t half = taps.size() / 2;
    for (std::size_t i = 0; i < taps.size(); ++i) EXPECT_NEAR(filtered[1777 - half + i], taps[i], 1e-15) << i;
    EXPECT_EQ(std::max_element(filtered.begin(), filtered.end()) - filtered.begin(), 1777);
  }
}

TEST(FirFilter, ADriftPassesALowPassAndNotAHighPassUpToBothEnds) {
  std::vector<double> drift(5000);
  std::iota(drift.begin(), drift.end(), -1000.0);
  EXPECT_LT(largestDifference(FirFilter(lowPassTaps(40, 1, 250)).apply(drift), drift), 1e-9);
  EXPECT_LT(largest(FirFilter(highPassTaps(1, 1, 250)).apply(drift)), 1e-9);
}

TEST(FirFilter, NothingBecomesNothing) {
  EXPECT_TRUE(FirFilter(randomTaps(33, 15)).apply(std::vector<double>()).empty());
  EXPECT_TRUE(FirFilter(randomTaps(501, 15)).apply(std::vector<double>()).empty());
  const FirFilter filter(randomTaps(501, 15));
  const std::vector<double> x(10);
  EXPECT_NO_THROW(filter.apply(wholeRecording(x), {5, 5}, {}));
  EXPECT_EQ(filter.inputFor({5, 5}, 10).length(), 0);
}

TEST(FirFilter, MissingInputAndWrongPlacesAreErrors) {
  const std::vector<double> x(100);
  std::vector<double> out(50);
  for (const std::size_t taps : {33U, 501U}) {
    const FirFilter filter(randomTaps(taps, 16));
    EXPECT_THROW(filter.apply({x, 1000, 9000}, {1000, 1050}, out), std::invalid_argument);
    EXPECT_THROW(filter.apply({x, 1000, 1050}, {1000, 1050}, out), std::invalid_argument);
    EXPECT_THROW(filter.apply({x, -5, 9000}, {0, 50}, out), std::invalid_argument);
    EXPECT_THROW(filter.apply(wholeRecording(x), {0, 49}, out), std::invalid_argument);
    EXPECT_THROW(filter.apply(wholeRecording(x), {60, 110}, out), std::invalid_argument);
  }
}

TEST(FirFilter, TapsThatWouldShiftTheSignalAreRefused) {
  EXPECT_THROW(FirFilter({}), std::invalid_argument);
  EXPECT_THROW(FirFilter({1, 1}), std::invalid_argument);
  EXPECT_THROW(FirFilter({1, 2, 3}), std::invalid_argument);
  EXPECT_THROW(FirFilter({1, std::numeric_limits<double>::quiet_NaN(), 1}), std::invalid_argument);
  EXPECT_THROW(FirFilter({std::numeric_limits<double>::infinity()}), std::invalid_argument);
}

TEST(FirFilter, ASampleThatIsNotANumberSpoilsNoMoreThanItsSurroundings) {
  std::vector<double> x(40000, 1.0);
  x[20000] = std::numeric_limits<double>::quiet_NaN();
  for (const double transition : {20.0, 1.0}) {
    const FirFilter filter(lowPassTaps(40, transition, 250));
    const std::vector<double> filtered = filter.apply(x);
    const int64_t reach = filter.halfLength() + filter.blockLength();
    for (int64_t p = 0; p < 40000; ++p) {
      if (std::abs(p - 20000) <= reach) continue;
      EXPECT_NEAR(filtered[static_cast<std::size_t>(p)], 1, 1e-12) << p;
    }
    EXPECT_TRUE(std::isnan(filtered[20000]));
  }
}

} // namespace
} // namespace emeg
