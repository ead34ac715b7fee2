#include "artifacts/cardiac/model/BeatStretches.h"

#include "tests/artifacts/PulseModelSamples.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {
namespace {

std::vector<double> regularBeats(int count, double interval, double first = 100) {
  return positionsOf(first, std::vector<double>(static_cast<std::size_t>(count - 1), interval));
}

std::vector<double> without(std::vector<double> beats, std::size_t index) {
  beats.erase(beats.begin() + static_cast<std::ptrdiff_t>(index));
  return beats;
}

TEST(BeatStretches, BeatsWithoutAGapAreOneStretch) {
  const std::vector<double> beats = positionsOf(100, variedIntervals(30, 3));
  const std::vector<BeatStretch> stretches = splitAtGaps(beats, 1.5);
  ASSERT_EQ(stretches.size(), 1U);
  EXPECT_EQ(stretches[0].firstBeat, 0U);
  EXPECT_EQ(stretches[0].lastBeat, 30U);
}

TEST(BeatStretches, AMissedBeatCutsThemInTwo) {
  const std::vector<double> beats = without(regularBeats(31, 250), 10);
  const std::vector<BeatStretch> stretches = splitAtGaps(beats, 1.5);
  ASSERT_EQ(stretches.size(), 2U);
  EXPECT_EQ(stretches[0].lastBeat, 9U);
  EXPECT_EQ(stretches[1].firstBeat, 10U);
  EXPECT_EQ(stretches[0].behind.length, 250);
  EXPECT_EQ(stretches[0].behind.reach, 150);
  EXPECT_EQ(stretches[1].inFront.length, 250);
  EXPECT_EQ(stretches[1].inFront.reach, 150);
}

TEST(BeatStretches, AGapIsMeasuredAgainstTheIntervalsAroundIt) {
  // From 200 to 320 samples within 60 beats: the last intervals are 1.6 times the first, but no gaps.
  std::vector<double> intervals;
  for (int i = 0; i < 60; ++i) intervals.push_back(200 + 2 * i);
  EXPECT_EQ(splitAtGaps(positionsOf(0, intervals), 1.5).size(), 1U);
  intervals[5] = 350;
  EXPECT_EQ(splitAtGaps(positionsOf(0, intervals), 1.5).size(), 2U);
}

TEST(BeatStretches, WithoutAFactorNothingIsAGap) {
  std::vector<double> intervals(20, 250.0);
  intervals[7] = 5000;
  EXPECT_EQ(splitAtGaps(positionsOf(0, intervals), 0).size(), 1U);
}

TEST(BeatStretches, ABeatBetweenTwoGapsStandsAlone) {
  std::vector<double> intervals(20, 250.0);
  intervals[7] = 500;
  intervals[8] = 510;
  const std::vector<BeatStretch> stretches = splitAtGaps(positionsOf(0, intervals), 1.5);
  ASSERT_EQ(stretches.size(), 3U);
  EXPECT_EQ(stretches[1].firstBeat, 8U);
  EXPECT_EQ(stretches[1].lastBeat, 8U);
}

TEST(BeatStretches, NeighboursNeverReachIntoEachOther) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    std::vector<double> intervals = variedIntervals(25, seed);
    intervals[seed % 25] *= 1.2;
    intervals[(3 * seed) % 25] *= 3;
    const std::vector<double> beats = positionsOf(10, intervals);
    const std::vector<BeatStretch> stretches = splitAtGaps(beats, 1.05); // cuts where the reach would overlap
    for (std::size_t s = 1; s < stretches.size(); ++s)
      EXPECT_LE(modelledSamples(stretches[s - 1], beats, 100000).end,
                modelledSamples(stretches[s], beats, 100000).begin);
  }
}

TEST(BeatStretches, TheModelledSamplesLieInsideTheRecording) {
  const std::vector<double> beats = regularBeats(10, 250, 20);
  const std::vector<BeatStretch> stretches = splitAtGaps(beats, 1.5);
  EXPECT_EQ(modelledSamples(stretches[0], beats, 5000), (PositionRange{0, 2270 + 150}));
  EXPECT_EQ(modelledSamples(stretches[0], beats, 2300), (PositionRange{0, 2300}));
}

} // namespace
} // namespace emeg
