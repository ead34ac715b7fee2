#include "dsp/Medians.h"

#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

namespace emeg {
namespace {

/// The refinement as defined, with bins that exist only where something fell into them.
double slowHistogramMedian(const std::vector<double>& values) {
  const auto n = static_cast<double>(values.size());
  double sum = 0;
  double squares = 0;
  for (const double v : values) {
    sum += v * 0.001;
    squares += (v * 0.001) * (v * 0.001);
  }
  const double scaledMean = sum / n;
  const double std = std::sqrt(std::max(0.0, squares / n - scaledMean * scaledMean)) * 1000;
  double lo = scaledMean * 1000 - std;
  double hi = scaledMean * 1000 + std;
  if (!(hi - lo > std * 1e-6)) return (lo + hi) / 2;
  const auto half = static_cast<long>(values.size() / 2);
  bool going = true;
  while (going) {
    std::map<long, long> bins;
    long below = 0;
    for (const double v : values) {
      if (v < lo) ++below;
      if (v >= lo && v < hi) ++bins[std::min(999L, static_cast<long>((v - lo) * 1000 / (hi - lo)))];
    }
    long k = -1;
    for (long seen = below; seen < half && k < 999;) seen += bins[++k];
    const double newLo = lo + static_cast<double>(k) * (hi - lo) / 1000;
    const double newHi = lo + static_cast<double>(k + 1) * (hi - lo) / 1000;
    going = bins[k + 1] >= 5 && newHi - newLo > std * 1e-6;
    lo = newLo;
    hi = newHi;
  }
  return (lo + hi) / 2;
}

int32_t countOf(const std::vector<double>& values) {
  return static_cast<int32_t>(values.size());
}

double histogramMedianOf(const std::vector<double>& values) {
  return histogramMedian(values.data(), countOf(values));
}

TEST(SortMedian, OneValueIsItsOwnMedian) {
  double value = 7.5;
  EXPECT_EQ(sortMedian(&value, 1), 7.5);
}

TEST(SortMedian, AnEvenCountGivesTheUpperMiddleAndASortedArray) {
  std::vector<double> values = {3, 1, 2, 4};
  EXPECT_EQ(sortMedian(values.data(), 4), 3);
  EXPECT_EQ(values, (std::vector<double>{1, 2, 3, 4}));
}

TEST(SortMedian, AgreesWithASortedCopy) {
  for (std::size_t count = 1; count <= 60; ++count) {
    std::vector<double> values = reference::random(count, static_cast<uint32_t>(count));
    if (count > 10) values[3] = values[7];
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sortMedian(values.data(), countOf(values)), sorted[count / 2]);
    EXPECT_EQ(values, sorted);
  }
}

TEST(SortMedian, EqualValuesKeepTheirOrder) {
  std::vector<double> values = {0.0, -0.0, -1.0};
  sortMedian(values.data(), 3);
  EXPECT_FALSE(std::signbit(values[1]));
  EXPECT_TRUE(std::signbit(values[2]));
}

TEST(SortMedian, AnEmptySeriesHasTheMedianZero) {
  EXPECT_EQ(sortMedian(nullptr, 0), 0);
  EXPECT_EQ(sortMedian(nullptr, -3), 0);
}

TEST(SortMedian, ValuesThatAreNotNumbersDoNoHarm) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> values = {nan, 2, nan, 1, -std::numeric_limits<double>::infinity()};
  sortMedian(values.data(), 5);
  EXPECT_EQ(std::count_if(values.begin(), values.end(), [](double v) { return std::isnan(v); }), 2);
}

TEST(HistogramMedian, AConstantSeriesGivesTheConstantAtOnce) {
  for (const double constant : {0.0, 1000.0, -8000.0, 250.0})
    EXPECT_EQ(histogramMedianOf(std::vector<double>(1024, constant)), constant);
  EXPECT_EQ(histogramMedianOf({4000.0}), 4000.0);
  // Where the scaled sums round, a spread of a few roundings is left.
  for (const double constant : {1.0, -8.0, 0.3, 77.7})
    EXPECT_NEAR(histogramMedianOf(std::vector<double>(1024, constant)), constant, 1e-7 * std::fabs(constant));
}

TEST(HistogramMedian, AVarianceThatRoundingMakesNegativeCountsAsZero) {
  // Squares of these constants do not add up exactly: the mean square falls below the squared mean for some.
  int negative = 0;
  for (int i = 1; i <= 200; ++i) {
    const double constant = 0.1 * i + 1e5;
    double sum = 0;
    double squares = 0;
    for (int j = 0; j < 777; ++j) {
      sum += constant * 0.001;
      squares += (constant * 0.001) * (constant * 0.001);
    }
    if (squares / 777 < (sum / 777) * (sum / 777)) ++negative;
    EXPECT_NEAR(histogramMedianOf(std::vector<double>(777, constant)), constant, 1e-2);
  }
  EXPECT_GT(negative, 0);
}

TEST(HistogramMedian, AgreesWithTheDefinition) {
  for (uint32_t seed = 1; seed <= 200; ++seed) {
    std::vector<double> values = reference::random(20 + 37 * seed, seed);
    for (double& v : values)
      v = seed % 3 == 0 ? 1000 * v * v * v : seed % 3 == 1 ? 50 + v : std::floor(20 * v);
    EXPECT_EQ(histogramMedianOf(values), slowHistogramMedian(values)) << seed;
  }
}

TEST(HistogramMedian, LiesNearTheExactMedianOfALongSeries) {
  std::vector<double> values = reference::random(100001, 3);
  for (double& v : values) v = 40 * v + 5;
  const double approximate = histogramMedianOf(values);
  std::nth_element(values.begin(), values.begin() + 50000, values.end());
  EXPECT_NEAR(approximate, values[50000], 0.1);
}

TEST(HistogramMedian, EndsWhenTheBinBehindTheMedianBinIsSparse) {
  // -1 and 1 weigh the range to one standard deviation of 1 around 0; the 101 values at 0.0005 all lie in bin
  // 500.
  std::vector<double> values(101, 0.0005);
  values.insert(values.end(), 3, -1.0);
  values.insert(values.end(), 3, 1.0);
  double squares = 6 + 101 * 0.0005 * 0.0005;
  const double mean = 101 * 0.0005 / 107;
  const double std = std::sqrt(squares / 107 - mean * mean);
  // One refinement, to the bin that holds them: half a bin is the largest possible distance.
  const double result = histogramMedianOf(values);
  EXPECT_NEAR(result, 0.0005, 0.5 * 2 * std / 1000 * 1.001);
  EXPECT_NE(result, 0.0005);
  EXPECT_EQ(result, slowHistogramMedian(values));
}

TEST(HistogramMedian, GoesOnWhileTheBinBehindTheMedianBinIsFull) {
  // 100 values in one bin and 5 in the one behind it refine further; with 4 the first refinement is the last.
  const auto series = [](int behind) {
    std::vector<double> values(100, 0.0);
    for (int i = 0; i < 100; ++i) values[static_cast<std::size_t>(i)] = 1e-5 * i;
    values.insert(values.end(), static_cast<std::size_t>(behind), 0.0018);
    values.insert(values.end(), 40, -10.0);
    values.insert(values.end(), 40, 10.0);
    return values;
  };
  for (const int behind : {0, 4, 5, 6, 50})
    EXPECT_EQ(histogramMedianOf(series(behind)), slowHistogramMedian(series(behind))) << behind;
}

TEST(HistogramMedian, AMedianInTheLastBinLooksAtABinThatIsAlwaysEmpty) {
  // Half of the values lie above the range, so that the walk ends behind the last bin.
  std::vector<double> values(60, 100.0);
  values.insert(values.end(), 40, -150.0);
  EXPECT_EQ(histogramMedianOf(values), slowHistogramMedian(values));
  std::vector<double> above(51, 1.0);
  above.insert(above.end(), 49, -1.0);
  EXPECT_EQ(histogramMedianOf(above), slowHistogramMedian(above));
}

TEST(HistogramMedian, AMedianBelowTheRangeStepsOneBinDown) {
  // More than half of the values lie below one standard deviation under the mean: impossible for large
  // shares, but two values are enough for a half that is reached before the first bin.
  const std::vector<double> values = {0.0, 1.0, 1.0, 0.0};
  EXPECT_EQ(histogramMedianOf(values), slowHistogramMedian(values));
  const std::vector<double> pair = {-3.0, 5.0};
  EXPECT_EQ(histogramMedianOf(pair), slowHistogramMedian(pair));
}

TEST(HistogramMedian, AnEmptySeriesHasTheMedianZero) {
  EXPECT_EQ(histogramMedian(nullptr, 0), 0);
  EXPECT_EQ(histogramMedian(nullptr, -1), 0);
}

TEST(HistogramMedian, AResultThatCannotBeComputedIsNotFinite) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(), 1e300}) {
    std::vector<double> values = reference::random(100, 4);
    values[50] = bad;
    EXPECT_FALSE(std::isfinite(histogramMedianOf(values))) << bad;
  }
}

TEST(HistogramMedian, SpreadsNearTheResolutionOfTheNumbersComeToAnEnd) {
  for (const double base : {1.0, 1e8, 1e15, -1e20})
    for (int steps = 1; steps <= 40; ++steps) {
      std::vector<double> values;
      double v = base;
      for (int i = 0; i < steps; ++i, v = std::nextafter(v, 1e300)) values.insert(values.end(), 20, v);
      EXPECT_NEAR(histogramMedianOf(values), base, 1e-5 * std::fabs(base));
    }
}

TEST(HistogramMedian, TinyAndHugeScalesWork) {
  for (const double scale : {1e-300, 1e-100, 1e100, 1e150}) {
    std::vector<double> values = reference::random(1001, 5);
    for (double& v : values) v *= scale;
    const double median = histogramMedianOf(values);
    EXPECT_LE(std::fabs(median), scale);
  }
}

/// The smallest distance of a value from a bin edge, over all bin edges of all refinements.
double slowMargin(const std::vector<double>& values) {
  const auto n = static_cast<double>(values.size());
  double sum = 0;
  double squares = 0;
  for (const double v : values) {
    sum += v * 0.001;
    squares += (v * 0.001) * (v * 0.001);
  }
  const double std = std::sqrt(std::max(0.0, squares / n - (sum / n) * (sum / n))) * 1000;
  double lo = sum / n * 1000 - std;
  double hi = sum / n * 1000 + std;
  if (!(hi - lo > std * 1e-6)) return 0;
  double margin = std::numeric_limits<double>::infinity();
  for (bool going = true; going;) {
    std::vector<long> bins(1001, 0);
    long seen = 0;
    for (const double v : values) {
      for (int edge = 0; edge <= 1000; ++edge)
        margin = std::min(margin, std::fabs(v - (lo + edge * (hi - lo) / 1000)));
      if (v < lo) ++seen;
      if (v >= lo && v < hi)
        ++bins[std::min<std::size_t>(999, static_cast<std::size_t>((v - lo) * 1000 / (hi - lo)))];
    }
    std::size_t behind = 0;
    while (seen < static_cast<long>(values.size() / 2) && behind < 1000) seen += bins[behind++];
    const double newLo = lo + (static_cast<double>(behind) - 1) * (hi - lo) / 1000;
    const double newHi = lo + static_cast<double>(behind) * (hi - lo) / 1000;
    going = bins[behind] >= 5 && newHi - newLo > std * 1e-6;
    lo = newLo;
    hi = newHi;
  }
  return margin;
}

double marginOf(const std::vector<double>& values) {
  double margin = -1;
  histogramMedian(values.data(), countOf(values), margin);
  return margin;
}

TEST(HistogramMedianMargin, AskingForItDoesNotChangeTheMedian) {
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    const std::vector<double> values = reference::random(5 + 61 * seed, seed);
    double margin = -1;
    EXPECT_EQ(histogramMedian(values.data(), countOf(values), margin), histogramMedianOf(values));
  }
}

TEST(HistogramMedianMargin, IsTheSmallestDistanceOfAnyValueFromAnyBinEdge) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    // Whole numbers around which many values gather, so that several refinements are needed, and plain noise.
    std::vector<double> values = reference::random(10 + 7 * seed, seed);
    for (double& v : values) v = seed % 2 == 0 ? std::floor(8 * v) + 200 + 1e-4 * v : 30 * v;
    const double margin = marginOf(values);
    EXPECT_GE(margin, 0);
    EXPECT_NEAR(margin, slowMargin(values), 1e-11) << seed;
  }
}

TEST(HistogramMedianMargin, CountsTheRefinementsBehindTheFirstToo) {
  // The first range has its edges far away from all values: -1 and 1 set it, 61 values lie in the middle of
  // one bin. The second refinement cuts that bin into a thousand.
  std::vector<double> values;
  for (int i = 0; i < 61; ++i) values.push_back(1e-5 * i);
  values.insert(values.end(), 30, -1.0);
  values.insert(values.end(), 30, 1.0);
  for (int i = 0; i < 5; ++i) values.push_back(2e-3 + 1e-5 * i);
  const double margin = marginOf(values);
  EXPECT_NEAR(margin, slowMargin(values), 1e-12);
  EXPECT_LT(margin, 1e-6);
}

TEST(HistogramMedianMargin, SmallerChangesMoveTheMedianBySoLittleToo) {
  int moved = 0;
  for (uint32_t seed = 1; seed <= 60; ++seed) {
    std::vector<double> values = reference::random(9 + seed, seed);
    for (double& v : values) v = 250 + 20 * v;
    const double margin = marginOf(values);
    ASSERT_GT(margin, 0);
    const double median = histogramMedianOf(values);
    const std::vector<double> changes = reference::random(values.size(), seed + 1000);
    std::vector<double> changed = values;
    for (std::size_t i = 0; i < values.size(); ++i) changed[i] += changes[i] * margin / 8;
    EXPECT_LE(std::fabs(histogramMedianOf(changed) - median), margin / 2) << seed;
    // Far larger changes do not all leave the bins alone.
    for (std::size_t i = 0; i < values.size(); ++i) changed[i] = values[i] + changes[i];
    if (std::fabs(histogramMedianOf(changed) - median) > margin / 2) ++moved;
  }
  EXPECT_GT(moved, 30);
}

TEST(HistogramMedianMargin, AValueOnAnEdgeLeavesNone) {
  // Mean 0 and standard deviation 1000 to the last bit: all values are ends of the range.
  const std::vector<double> values = {-1000.0, 1000.0, -1000.0, 1000.0};
  EXPECT_EQ(marginOf(values), 0);
}

TEST(HistogramMedianMargin, IsZeroWhereTheSpreadDecidesAlone) {
  EXPECT_EQ(marginOf(std::vector<double>(100, 250.0)), 0);
  EXPECT_EQ(marginOf({4000.0}), 0);
  EXPECT_EQ(marginOf({1.0, std::numeric_limits<double>::quiet_NaN(), 2.0}), 0);
  double margin = -1;
  EXPECT_EQ(histogramMedian(nullptr, 0, margin), 0);
  EXPECT_EQ(margin, 0);
}

} // namespace
} // namespace emeg
