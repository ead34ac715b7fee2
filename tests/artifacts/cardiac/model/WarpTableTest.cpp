#include "artifacts/cardiac/model/WarpTable.h"

#include "artifacts/cardiac/model/WarpEquation.h"
#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace emeg {
namespace {

constexpr double margins[] = {0.001, 0.02, 0.05, 0.12, 0.3, 0.45};

/// Parameters from one end of their range to the other.
std::vector<double> parametersFor(double margin) {
  std::vector<double> parameters;
  for (int step = 0; step <= 16; ++step) parameters.push_back(margin + step * (1 - 2 * margin) / 16);
  return parameters;
}

TEST(WarpTable, HasTheBitsOfThePlainVersion) {
  for (const double margin : margins)
    for (const double a : parametersFor(margin))
      for (const int32_t length : {3, 5, 11, 613}) {
        const BeatTimeBase base = timeBaseWith(243.7, margin, length);
        const WarpTable table = makeWarpTable(a, base);
        const LiteralWarpTable literal = literalWarpTable(a, literalOf(base));
        ASSERT_TRUE(sameBits(table.warpPosition, literal.warpPosition))
            << a << " " << margin << " " << length;
        ASSERT_TRUE(sameBits(table.warpOffset, literal.warpOffset)) << a << " " << margin << " " << length;
      }
}

TEST(WarpTable, AgreesWithThePlainVersionWithoutAMargin) {
  for (const double a : parametersFor(0))
    for (const int32_t length : {3, 5, 11, 613}) {
      const BeatTimeBase base = timeBaseWith(250, 0, length);
      const WarpTable table = makeWarpTable(a, base);
      const LiteralWarpTable literal = literalWarpTable(a, literalOf(base));
      for (std::size_t k = 0; k < table.warpPosition.size(); ++k) {
        ASSERT_NEAR(table.warpPosition[k], literal.warpPosition[k], 1e-14) << a << " " << k;
        ASSERT_NEAR(table.warpOffset[k], literal.warpOffset[k], 1e-11) << a << " " << k;
      }
    }
}

TEST(WarpTable, SolvesTheCubicOfEitherSideOfTheBend) {
  for (const double margin : margins)
    for (const double a : parametersFor(margin)) {
      const WarpTable table = makeWarpTable(a, timeBaseWith(250, margin, 401));
      ASSERT_EQ(table.warpPosition.size(), 401U);
      ASSERT_EQ(table.warpOffset.size(), 401U);
      for (std::size_t k = 1; k < 400; ++k) {
        const double y = static_cast<double>(k) / 400;
        const bool first = static_cast<double>(k) < std::ceil(400 * a);
        const double share = first ? a : 1 - a;
        const double x = std::cbrt(2 * (first ? table.warpPosition[k] : 1 - table.warpPosition[k]));
        const double left = ((1 - x) * 3 * (share - margin) + share * x * x) * x;
        EXPECT_NEAR(left, first ? y : 1 - y, 1e-8) << a << " " << margin << " " << k;
        EXPECT_NEAR(table.warpOffset[k], (y - table.warpPosition[k]) * 250, 1e-9);
      }
    }
}

TEST(WarpTable, BeginsAndEndsWithTheInterval) {
  for (const double margin : {0.0, 0.1, 0.5})
    for (const double a : parametersFor(margin)) {
      const WarpTable table = makeWarpTable(a, timeBaseWith(250, margin, 41));
      if (a > 0) { // with nothing in front of the bend, the part behind it begins with the first value
        EXPECT_EQ(table.warpPosition.front(), 0.0);
        EXPECT_EQ(table.warpOffset.front(), 0.0);
      }
      EXPECT_EQ(table.warpPosition.back(), 1.0);
      EXPECT_EQ(table.warpOffset.back(), 0.0);
    }
}

TEST(WarpTable, SamplesAnIntervalOfTheMedianLengthEvenlyWhateverTheParameter) {
  for (const double margin : {0.0, 0.02, 0.1, 0.3})
    for (const double a : parametersFor(margin)) {
      const WarpTable table = makeWarpTable(a, timeBaseWith(250, margin, 401));
      for (std::size_t j = 0; j < 401; ++j)
        ASSERT_NEAR(250 * table.warpPosition[j] + table.warpOffset[j], 250 * static_cast<double>(j) / 400,
                    1e-9);
    }
}

TEST(WarpTable, NeverRunsBackwardsFromTheShortestIntervalUpwards) {
  for (const double margin : {0.0, 0.02, 0.1, 0.3})
    for (const double a : parametersFor(margin)) {
      const WarpTable table = makeWarpTable(a, timeBaseWith(250, margin, 401));
      for (const double interval : {250 * (1 - 2 * margin), 250.0, 400.0})
        for (std::size_t j = 1; j < 401; ++j)
          ASSERT_GT(interval * table.warpPosition[j] + table.warpOffset[j],
                    interval * table.warpPosition[j - 1] + table.warpOffset[j - 1] - 1e-7);
    }
}

TEST(WarpTable, ASmallerParameterAbsorbsTheDifferenceEarlier) {
  const BeatTimeBase base = timeBaseWith(250, 0.1, 401);
  const WarpTable early = makeWarpTable(0.2, base);
  const WarpTable late = makeWarpTable(0.8, base);
  for (std::size_t k = 40; k < 360; ++k) EXPECT_GT(early.warpPosition[k], late.warpPosition[k]);
  EXPECT_GT(early.warpPosition[200], 0.7);
  EXPECT_LT(late.warpPosition[200], 0.3);
}

TEST(WarpTable, IsFiniteWhereMarginsAndParameterLeaveNothingToBend) {
  for (const double a : {0.0, 0.5, 1.0})
    for (const double margin : {0.0, 0.5}) {
      const WarpTable table = makeWarpTable(a, timeBaseWith(250, margin, 101));
      for (std::size_t k = 0; k < 101; ++k) {
        ASSERT_TRUE(std::isfinite(table.warpPosition[k])) << a << " " << margin << " " << k;
        ASSERT_TRUE(std::isfinite(table.warpOffset[k])) << a << " " << margin << " " << k;
      }
    }
}

double cube(double x) {
  return x * x * x - 0.125;
}

double slopeOfCube(double x) {
  return 3 * x * x;
}

TEST(SolveRising, FindsTheRootFromEitherSide) {
  for (const double start : {0.01, 0.3, 0.5, 0.9, 1.0, 7.0})
    EXPECT_NEAR(solveRising(cube, slopeOfCube, start), 0.5, 1e-12);
}

TEST(SolveRising, EndsWithTheFirstStepOfAtMostATenBillionth) {
  // Every step halves the distance to 0.25: the root is as far away as the last step was long.
  int steps = 0;
  const auto line = [&](double x) {
    ++steps;
    return x - 0.25;
  };
  const double root = solveRising(
      line, [](double) { return 2.0; }, 1.0);
  EXPECT_EQ(steps, 33); // 0.75 / 2 ^ 33 is the first below 1e-10
  EXPECT_NEAR(root, 0.25, 1e-10);
  EXPECT_GT(root, 0.25 + 1e-11);
}

TEST(SolveRising, HalvesTheUnitIntervalWhereTheSlopeIsZero) {
  EXPECT_NEAR(solveRising(cube, slopeOfCube, 0.0), 0.5, 1e-15);
  EXPECT_NEAR(solveRising(
                  cube, [](double) { return 0.0; }, 0.9),
              0.5, 1e-15);
}

TEST(SolveRising, HalvesTheUnitIntervalWhereAStepIsNotFinite) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_NEAR(solveRising(
                  cube, [](double) { return 1e-320; }, 0.9),
              0.5, 1e-15);
  EXPECT_NEAR(solveRising(
                  cube, [=](double) { return nan; }, 0.9),
              0.5, 1e-15);
  EXPECT_NEAR(solveRising(cube, slopeOfCube, nan), 0.5, 1e-15);
}

TEST(SolveRising, TriesNoFurtherStepWhereOneFails) {
  for (const double bad : {0.0, 1e-320, std::numeric_limits<double>::quiet_NaN()}) {
    int slopes = 0;
    solveRising(
        cube,
        [&](double) {
          ++slopes;
          return bad;
        },
        0.9);
    EXPECT_EQ(slopes, 1) << bad;
  }
}

TEST(SolveRising, HalvesTheUnitIntervalAfterAHundredStepsThatDoNotSettle) {
  int slopes = 0;
  const auto backwards = [&](double) {
    ++slopes;
    return -1e7;
  };
  EXPECT_NEAR(solveRising(cube, backwards, 0.9), 0.5, 1e-15);
  EXPECT_EQ(slopes, 100);

  // Steps that shrink to 1e-10 with the hundredth count.
  slopes = 0;
  const auto late = [&](double) { return ++slopes == 100 ? 1.0 : 1e9; };
  EXPECT_NEAR(solveRising([&](double) { return slopes == 100 ? 0.0 : 1.0; }, late, 0.75), 0.75 - 99e-9,
              1e-13);
}

TEST(SolveRising, AFunctionThatIsPositiveThroughoutHasItsRootAtZero) {
  EXPECT_NEAR(solveRising([](double) { return 1.0; }, [](double) { return 0.0; }, 0.5), 0.0, 1e-15);
  EXPECT_NEAR(solveRising([](double) { return -1.0; }, [](double) { return 0.0; }, 0.5), 1.0, 1e-15);
}

} // namespace
} // namespace emeg
