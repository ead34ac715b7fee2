#include "artifacts/cardiac/model/BeatTimeBase.h"

#include "dsp/Medians.h"
#include "tests/artifacts/PulseModelSamples.h"
#include "tests/artifacts/reference/LiteralPulseModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace emeg {
namespace {

void expectLiteral(const std::vector<double>& positions, int32_t heartPeriod) {
  const BeatTimeBase base = makeBeatTimeBase(positions, heartPeriod);
  const LiteralModelSetUp literal = literalModelSetUp(positions, heartPeriod);
  EXPECT_EQ(base.pulsePositions, positions);
  EXPECT_EQ(base.pulseIntervals, literal.pulseIntervals);
  EXPECT_EQ(base.medianPulseInterval, literal.medianPulseInterval);
  EXPECT_EQ(base.modelLength, literal.modelLength);
  EXPECT_EQ(base.warpStep, literal.warpStep);
  EXPECT_EQ(base.warpMargin, literal.warpMargin);
  EXPECT_EQ(base.epochHalfLength, literal.epochHalfLength);
}

TEST(BeatTimeBase, AgreesWithThePlainVersionForIntervalsOfAllKinds) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    std::vector<double> intervals = variedIntervals(static_cast<int>(2 + seed % 40), seed);
    if (seed % 3 == 1)
      for (double& interval : intervals) interval += 0.001 * static_cast<double>(seed);
    if (seed % 5 == 0) intervals[0] *= 4;
    if (seed % 7 == 0) intervals.back() = 1;
    expectLiteral(positionsOf(static_cast<double>(seed), intervals), static_cast<int32_t>(200 + seed % 100));
  }
}

TEST(BeatTimeBase, FollowsFromMedianShortestAndLongestInterval) {
  // 20 intervals of 240, 21 of 250 and 20 of 260, one of 220, one of 300.
  std::vector<double> intervals = {220, 300};
  intervals.insert(intervals.end(), 20, 240.0);
  intervals.insert(intervals.end(), 21, 250.0);
  intervals.insert(intervals.end(), 20, 260.0);
  const BeatTimeBase base = makeBeatTimeBase(positionsOf(3, intervals), 251);
  EXPECT_EQ(base.pulseIntervals, intervals);
  EXPECT_EQ(base.nrOfIntervals(), 63U);
  EXPECT_EQ(base.nrOfEpochs(), 62U);
  EXPECT_NEAR(base.medianPulseInterval, 250, 0.02); // a bin of the histogram is 0.025 wide
  EXPECT_EQ(base.modelLength, 2 * std::lround(251 * (80 / (base.medianPulseInterval - 220))) + 1);
  EXPECT_NEAR(base.modelLength, 2 * 251 * 80 / 30, 3);
  EXPECT_NEAR(base.warpStep * (base.modelLength - 1), 1.0, 1e-15);
  EXPECT_NEAR(base.warpMargin, 0.5 * (1 - 220.0 / 250), 1e-4);
  EXPECT_EQ(base.epochHalfLength, static_cast<int32_t>(std::ceil(base.modelLength * 0.6)));
  EXPECT_EQ(base.epochLength(), 2 * base.epochHalfLength + 1);
}

TEST(BeatTimeBase, HasTwiceThePeriodAndOneValuesWhenTheShortestIntervalEqualsTheMedian) {
  for (const int32_t period : {1, 200, 245, 301}) {
    const BeatTimeBase base = makeBeatTimeBase(positionsOf(7, {250, 250, 250, 250}), period);
    EXPECT_EQ(base.medianPulseInterval, 250);
    EXPECT_EQ(base.modelLength, 2 * period + 1);
    EXPECT_EQ(base.warpMargin, 0);
  }
}

TEST(BeatTimeBase, CountsAShortestIntervalLessThanHalfASampleBelowTheMedianAsEqualToIt) {
  int equal = 0;
  int different = 0;
  for (double shortest = 249.3; shortest < 249.7; shortest += 0.01) {
    std::vector<double> intervals(41, 250.0);
    intervals.push_back(shortest);
    intervals.push_back(260.0);
    const BeatTimeBase base = makeBeatTimeBase(positionsOf(0, intervals), 245);
    if (base.medianPulseInterval - *std::min_element(base.pulseIntervals.begin(), base.pulseIntervals.end()) <
        0.5) {
      EXPECT_EQ(base.modelLength, 491);
      ++equal;
    } else {
      EXPECT_GT(base.modelLength, 491 * 10);
      ++different;
    }
    EXPECT_GT(base.warpMargin, 0);
  }
  EXPECT_GT(equal, 5);
  EXPECT_GT(different, 5);
}

TEST(BeatTimeBase, CountsAMarginBelowZeroAsZero) {
  // The centre of the histogram's bin lies below every interval.
  const BeatTimeBase base = makeBeatTimeBase(positionsOf(0, {250, 250, 250, 250, 250, 250, 300}), 240);
  ASSERT_LT(base.medianPulseInterval, 250);
  EXPECT_EQ(base.warpMargin, 0);
  EXPECT_EQ(base.modelLength, 481);
}

TEST(BeatTimeBase, KeepsTheModelLengthBetweenThreeAndAHundredThousandAndOne) {
  const std::vector<double> equal = positionsOf(0, {250, 250, 250});
  EXPECT_EQ(makeBeatTimeBase(equal, 0).modelLength, 3);
  EXPECT_EQ(makeBeatTimeBase(equal, 1).modelLength, 3);
  EXPECT_EQ(makeBeatTimeBase(equal, -500).modelLength, 3);
  EXPECT_EQ(makeBeatTimeBase(equal, 2).modelLength, 5);
  EXPECT_EQ(makeBeatTimeBase(equal, 49999).modelLength, 99999);
  EXPECT_EQ(makeBeatTimeBase(equal, 50000).modelLength, 100001);
  EXPECT_EQ(makeBeatTimeBase(equal, 50001).modelLength, 100001);
  EXPECT_EQ(makeBeatTimeBase(equal, 2000000000).modelLength, 100001);
  EXPECT_EQ(makeBeatTimeBase(equal, 0).epochHalfLength, 2);
  EXPECT_EQ(makeBeatTimeBase(equal, 2000000000).epochHalfLength, 60001);
}

TEST(BeatTimeBase, OneVeryLongIntervalMakesTheLongestModel) {
  std::vector<double> intervals(30, 250.0);
  intervals[7] = 249;
  intervals[8] = 1e6;
  const BeatTimeBase base = makeBeatTimeBase(positionsOf(0, intervals), 245);
  EXPECT_EQ(base.modelLength, 100001);
  EXPECT_TRUE(std::isfinite(base.warpMargin));
}

TEST(BeatTimeBase, CountsIntervalsInWholeSamples) {
  const BeatTimeBase base = makeBeatTimeBase({10.9, 260.2, 510.9, 760.9}, 250);
  EXPECT_EQ(base.start(0), 10);
  EXPECT_EQ(base.length(0), 249); // 249.3
  EXPECT_EQ(base.start(1), 260);
  EXPECT_EQ(base.length(1), 250); // 250.7
  EXPECT_EQ(base.start(2), 510);
  EXPECT_EQ(base.length(2), 250);
  EXPECT_EQ(makeBeatTimeBase({-0.5, 250, 500}, 250).start(0), -1);
}

TEST(BeatTimeBase, TheMarginsLeaveRoomForAWarpParameter) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    std::vector<double> intervals = variedIntervals(20, seed);
    intervals[3] = static_cast<double>(seed - 1); // from no interval at all upwards
    const BeatTimeBase base = makeBeatTimeBase(positionsOf(0, intervals), 245);
    EXPECT_GE(base.warpMargin, 0);
    EXPECT_LE(base.warpMargin, 0.5);
  }
}

} // namespace
} // namespace emeg
