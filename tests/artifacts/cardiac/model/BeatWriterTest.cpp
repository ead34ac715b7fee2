#include "artifacts/cardiac/model/BeatWriter.h"

#include "artifacts/cardiac/model/BeatReassembly.h"
#include "tests/artifacts/cardiac/BeatTimeBases.h"
#include "tests/dsp/SimdLevelTests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

namespace emeg {
namespace {

/// Writes all beats with one writer, in this order, and one by one without it.
testing::AssertionResult writesTheSame(const BeatTimeBase& base, double a, std::size_t length,
                                       const std::vector<std::size_t>& order) {
  const Matrix beats = noiseMatrix(base.nrOfIntervals(), static_cast<std::size_t>(base.modelLength), 3);
  EdgedArray together(length, 0, 77.0);
  EdgedArray alone(length, 0, 77.0);
  BeatWriter writer(base, a);
  for (const std::size_t i : order) {
    writer.write(i, beats[i], together.data(), static_cast<int64_t>(length));
    writeBeatBack(base, i, a, beats[i], alone.data(), static_cast<int64_t>(length));
  }
  return sameBits(together.values(), alone.values());
}

std::vector<std::size_t> ascending(const BeatTimeBase& base) {
  std::vector<std::size_t> order(base.nrOfIntervals());
  std::iota(order.begin(), order.end(), std::size_t{0});
  return order;
}

TEST(BeatWriter, WritesTheBitsOfOneBeatAtATimeForEveryNumberOfIntervals) {
  for (int n = 2; n <= 26; ++n) {
    const BeatTimeBase base =
        makeBeatTimeBase(positionsOf(9, variedIntervals(n, static_cast<unsigned>(n))), 245);
    const auto length = static_cast<std::size_t>(base.pulsePositions.back()) + 5;
    for (const double part : {0.002, 0.3, 0.5, 0.998}) {
      const double a = base.warpMargin + part * (1 - 2 * base.warpMargin);
      ASSERT_TRUE(writesTheSame(base, a, length, ascending(base))) << n << " " << part;
    }
  }
}

TEST(BeatWriter, WritesTheBitsOfOneBeatAtATimeWhereTheWarpIsFlatAtTheBend) {
  const BeatTimeBase equal = makeBeatTimeBase(positionsOf(9, std::vector<double>(11, 250.0)), 245);
  const BeatTimeBase some =
      timeBaseWith(250, 0.0, 491, positionsOf(9, {250, 250, 270, 250, 300, 251, 250, 280, 250, 250}));
  for (const double a : {0.001, 0.25, 0.5, 0.73, 1.0}) {
    ASSERT_TRUE(writesTheSame(equal, a, 2800, ascending(equal))) << a;
    ASSERT_TRUE(writesTheSame(some, a, 2800, ascending(some))) << a;
  }
}

TEST(BeatWriter, WritesTheBitsOfOneBeatAtATimeForVeryUnequalIntervals) {
  for (const double margin : {0.0, 0.3, 0.5})
    for (const double a : {margin, 0.5, 1 - margin}) {
      const BeatTimeBase base =
          timeBaseWith(250, margin, 201, positionsOf(3, {250, 0, 1, 5000, 2, 250, 90.7, 251, 249.2, 3, 400}));
      ASSERT_TRUE(writesTheSame(base, a, 7000, ascending(base))) << margin << " " << a;
    }
}

TEST(BeatWriter, WritesIntervalsThatAreNotWhollyInTheSeriesAsFarAsTheyAre) {
  for (const double first : {-600.0, -100.0, -1.0, 0.0, 300.0, 1e6, -1e6}) {
    const BeatTimeBase base = makeBeatTimeBase(positionsOf(first, variedIntervals(11, 4)), 245);
    for (const std::size_t length : {1, 100, 1000, 2700})
      ASSERT_TRUE(writesTheSame(base, 0.4, length, ascending(base))) << first << " " << length;
  }
}

TEST(BeatWriter, WritesBeatsInAnyOrder) {
  const BeatTimeBase base = makeBeatTimeBase(positionsOf(9, variedIntervals(20, 5)), 245);
  std::vector<std::size_t> order = ascending(base);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  EXPECT_TRUE(writesTheSame(base, 0.4, 6000, order));
}

} // namespace
} // namespace emeg
