#include "dsp/Statistics.h"

#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace emeg {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Median, OfAnOddCountIsTheMiddleValue) {
  EXPECT_EQ(median(std::vector<double>{5, -1, 3}), 3);
  EXPECT_EQ(median(std::vector<double>{7.5}), 7.5);
}

TEST(Median, OfAnEvenCountIsTheMeanOfBothMiddleValues) {
  EXPECT_EQ(median(std::vector<double>{4, 1, 3, 2}), 2.5);
  EXPECT_EQ(median(std::vector<float>{10, 20}), 15);
  EXPECT_EQ(median(std::vector<double>{1.7e308, 1.7e308}), 1.7e308);
}

TEST(UpperMedian, OfAnEvenCountIsTheUpperMiddleValue) {
  EXPECT_EQ(upperMedian(std::vector<double>{4, 1, 3, 2}), 3);
  EXPECT_EQ(upperMedian(std::vector<double>{4, 1, 3}), 3);
}

TEST(UpperMedian, LeavesTheValuesAloneUnlessItMayReorderThem) {
  const std::vector<double> values = {5, 4, 3, 2, 1, nan};
  std::vector<double> reordered(values.begin(), values.end() - 1);
  EXPECT_EQ(upperMedian(values), 3);
  EXPECT_EQ(values[0], 5);
  EXPECT_EQ(upperMedianReordering(reordered), 3);
  std::sort(reordered.begin(), reordered.end());
  EXPECT_EQ(reordered, (std::vector<double>{1, 2, 3, 4, 5}));
}

TEST(LowerPercentile, IsTheValueAtTheRoundedDownRank) {
  const std::vector<double> values = {50, 10, 40, 20, 30};
  EXPECT_EQ(lowerPercentile(values, 0), 10);
  EXPECT_EQ(lowerPercentile(values, 0.24), 10);
  EXPECT_EQ(lowerPercentile(values, 0.25), 20);
  EXPECT_EQ(lowerPercentile(values, 0.99), 40);
  EXPECT_EQ(lowerPercentile(values, 1), 50);
}

TEST(LowerPercentile, TakesSharesOutsideItsRangeAsTheLimits) {
  const std::vector<double> values = {1, 2, 3};
  EXPECT_EQ(lowerPercentile(values, -1), 1);
  EXPECT_EQ(lowerPercentile(values, 7), 3);
  EXPECT_EQ(lowerPercentile(values, nan), 1);
}

TEST(RootMeanSquare, OfASinusoidIsItsAmplitudeOverTheRootOfTwo) {
  std::vector<double> values(1000);
  for (std::size_t i = 0; i < values.size(); ++i)
    values[i] = 3 * std::sin(2 * 3.14159265358979 * static_cast<double>(i) / 100);
  EXPECT_NEAR(rootMeanSquare(values), 3 / std::sqrt(2), 1e-9);
}

TEST(Statistics, AgreeWithASortedCopy) {
  for (std::size_t count = 1; count <= 80; ++count) {
    const std::vector<double> values = reference::random(count, static_cast<uint32_t>(count));
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(upperMedian(values), sorted[count / 2]);
    EXPECT_EQ(median(values), (sorted[(count - 1) / 2] + sorted[count / 2]) / 2);
    for (const double share : {0.02, 0.5, 0.95})
      EXPECT_EQ(lowerPercentile(values, share),
                sorted[static_cast<std::size_t>(share * static_cast<double>(count - 1))]);
  }
}

TEST(Statistics, OfNothingAreZero) {
  for (const std::vector<double>& nothing : {std::vector<double>{}, std::vector<double>{nan, nan}}) {
    std::vector<double> copy = nothing;
    EXPECT_EQ(median(nothing), 0);
    EXPECT_EQ(upperMedian(nothing), 0);
    EXPECT_EQ(upperMedianReordering(copy), 0);
    EXPECT_EQ(lowerPercentile(nothing, 0.5), 0);
    EXPECT_EQ(rootMeanSquare(nothing), 0);
  }
  EXPECT_EQ(median(std::span<const float>()), 0);
}

TEST(Statistics, DoNotCountWhatIsNotANumber) {
  const std::vector<double> values = {nan, 4, nan, 1, 3, 2, nan};
  EXPECT_EQ(median(values), 2.5);
  EXPECT_EQ(upperMedian(values), 3);
  EXPECT_EQ(lowerPercentile(values, 1), 4);
  EXPECT_EQ(rootMeanSquare(values), std::sqrt(30.0 / 4));
}

TEST(Statistics, CountInfiniteValues) {
  const std::vector<double> values = {infinity, 1, -infinity, 2, infinity};
  EXPECT_EQ(median(values), 2);
  EXPECT_EQ(lowerPercentile(values, 1), infinity);
  EXPECT_EQ(rootMeanSquare(values), infinity);
}

} // namespace
} // namespace emeg
