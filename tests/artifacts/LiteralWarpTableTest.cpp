#include "tests/artifacts/reference/LiteralWarpTable.h"

#include "tests/artifacts/PulseModelSamples.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace emeg {
namespace {

TEST(LiteralWarpTable, SolvesTheEquationsOfBothParts) {
  for (const double b : {0.001, 0.05, 0.12, 0.3}) {
    for (int step = 0; step <= 8; ++step) {
      const double a = b + step * (1 - 2 * b) / 8;
      const LiteralModelSetUp setUp = setUpOf(250, b, 613);
      const LiteralWarpTable table = literalWarpTable(a, setUp);
      ASSERT_EQ(table.warpPosition.size(), 613U);
      EXPECT_EQ(table.warpPosition[0], 0.0);
      EXPECT_EQ(table.warpPosition[612], 1.0);
      EXPECT_EQ(table.warpOffset[0], 0.0);
      EXPECT_EQ(table.warpOffset[612], 0.0);
      for (int k = 1; k < 612; ++k) {
        const std::size_t index = static_cast<std::size_t>(k);
        const double position = table.warpPosition[index];
        const bool first = k < 612 * a;
        const double part = first ? a : 1 - a;
        const double x = std::cbrt(2 * (first ? position : 1 - position));
        const double y = 3 * (part - b) * (x - x * x) + part * x * x * x;
        EXPECT_NEAR(y, first ? k / 612.0 : 1 - k / 612.0, 1e-8) << "a " << a << ", b " << b << ", k " << k;
        EXPECT_NEAR(table.warpOffset[index], (k / 612.0 - position) * 250, 1e-9);
      }
    }
  }
}

TEST(LiteralWarpTable, RisesForEveryParameter) {
  for (const double b : {0.0, 0.05, 0.3}) {
    for (int step = 1; step < 16; ++step) {
      const LiteralModelSetUp setUp = setUpOf(250, b, 501);
      const LiteralWarpTable table = literalWarpTable(b + step * (1 - 2 * b) / 16, setUp);
      const double shortest = 250 * (1 - 2 * b);
      for (std::size_t k = 1; k < 501; ++k) {
        EXPECT_GT(table.warpPosition[k], table.warpPosition[k - 1]);
        for (const double interval : {shortest, 250.0, 400.0})
          EXPECT_GT(interval * table.warpPosition[k] + table.warpOffset[k],
                    interval * table.warpPosition[k - 1] + table.warpOffset[k - 1] - 1e-7);
      }
    }
  }
}

TEST(LiteralWarpTable, SamplesAnIntervalOfTheMedianLengthEvenly) {
  for (const double a : {0.1, 0.37, 0.5, 0.9}) {
    const LiteralModelSetUp setUp = setUpOf(250, 0.1, 401);
    const LiteralWarpTable table = literalWarpTable(a, setUp);
    for (std::size_t j = 0; j < 401; ++j)
      EXPECT_NEAR(250 * table.warpPosition[j] + table.warpOffset[j], 250 * static_cast<double>(j) / 400,
                  1e-10);
  }
}

TEST(LiteralWarpTable, IsFiniteWhereNewtonsMethodMeetsAZeroDerivative) {
  // Without a margin the cubic is flat at 1, where the iteration starts.
  const LiteralModelSetUp setUp = setUpOf(250, 0.0, 401);
  for (const double a : {0.25, 0.5, 1.0}) {
    const LiteralWarpTable table = literalWarpTable(a, setUp);
    for (std::size_t k = 1; k < 400; ++k) {
      const double y = static_cast<double>(k) / 400;
      // y = a (1 - (1 - x)^3) in the first part, its mirror image in the second. Near the triple root at x =
      // 1 the cubic tells values of x apart only to the cube root of the rounding error.
      const double x = y < a ? 1 - std::cbrt(1 - y / a) : 1 - std::cbrt(1 - (1 - y) / (1 - a));
      EXPECT_NEAR(table.warpPosition[k], y < a ? 0.5 * x * x * x : 1 - 0.5 * x * x * x, 2e-5)
          << a << " " << k;
    }
  }
}

TEST(LiteralWarpTable, SamplesTheMedianLengthEvenlyAtTheEndsOfTheParametersRange) {
  // The part whose share is 0 is left out.
  const LiteralModelSetUp setUp = setUpOf(250, 0.0, 401);
  for (const double a : {0.0, 1.0}) {
    const LiteralWarpTable table = literalWarpTable(a, setUp);
    for (std::size_t j = 0; j < 401; ++j)
      EXPECT_NEAR(250 * table.warpPosition[j] + table.warpOffset[j], 250 * static_cast<double>(j) / 400,
                  1e-10);
  }
}

TEST(LiteralRoot, FallsBackToHalvingWhenNewtonsMethodDoesNotSettle) {
  const auto cube = [](double x) { return x * x * x - 0.125; };
  // Steps that go nowhere, to infinity, and over a zero derivative.
  EXPECT_NEAR(literalRoot(
                  cube, [](double) { return 1e10; }, 0.9),
              0.9, 1e-9); // settled at once
  EXPECT_NEAR(literalRoot(
                  cube, [](double) { return -1e7; }, 0.9),
              0.5, 1e-12);
  EXPECT_NEAR(literalRoot(
                  cube, [](double) { return 1e-320; }, 0.9),
              0.5, 1e-12);
  EXPECT_NEAR(literalRoot(
                  cube, [](double x) { return 3 * x * x; }, 0.0),
              0.5, 1e-12);
  EXPECT_NEAR(literalRoot(
                  cube, [](double x) { return 3 * x * x; }, 1.0),
              0.5, 1e-12);
}

TEST(LiteralResampledInterval, ReadsARampWhereTheTableSays) {
  const LiteralModelSetUp setUp = setUpOf(250, 0.1, 701);
  std::vector<double> ramp(1000);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<double>(i);
  const LiteralWarpTable table = literalWarpTable(0.4, setUp);
  for (const double interval : {210.0, 250.0, 310.0, 310.9}) {
    const std::vector<double> beat = literalResampledInterval(ramp, 100.8, interval, table);
    for (std::size_t j = 0; j < beat.size(); ++j) {
      const double h = static_cast<double>(j) / 700;
      EXPECT_NEAR(beat[j], 100 + 250 * h + (std::floor(interval) - 250) * table.warpPosition[j], 1e-9);
    }
  }
}

TEST(LiteralResampledInterval, TakesSamplesOutsideTheSeriesAsZero) {
  const LiteralModelSetUp setUp = setUpOf(10, 0.1, 21);
  const LiteralWarpTable table = literalWarpTable(0.5, setUp);
  const std::vector<double> series(10, 1.0);
  const std::vector<double> inside = literalResampledInterval(series, 0, 10, table);
  EXPECT_NEAR(inside[18], 1.0, 1e-12);
  EXPECT_NEAR(inside[19], 0.5, 1e-9);
  EXPECT_NEAR(inside[20], 0.0, 1e-12);
  const std::vector<double> before = literalResampledInterval(series, -5, 10, table);
  EXPECT_NEAR(before[7], 0.0, 1e-12);
  EXPECT_NEAR(before[9], 0.5, 1e-9);
  EXPECT_NEAR(before[11], 1.0, 1e-9);
  EXPECT_EQ(literalResampledInterval({}, 3, 10, table), std::vector<double>(21, 0.0));
}

} // namespace
} // namespace emeg
