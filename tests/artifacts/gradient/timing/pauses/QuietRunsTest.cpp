#include "artifacts/gradient/timing/pauses/QuietRuns.h"

#include "artifacts/gradient/timing/pauses/SliceCounts.h"

#include <gtest/gtest.h>

#include <cmath>

namespace emeg {
namespace {

std::vector<QuietRun> runsOfLengths(const std::vector<int64_t>& lengths) {
  std::vector<QuietRun> runs;
  int64_t start = 0;
  for (const int64_t length : lengths) {
    runs.push_back({start, length});
    start += length + 100;
  }
  return runs;
}

} // namespace

// Half the mean of the top decile: a few spikes move it little.
TEST(EnvelopeThreshold, IsHalfTheMeanOfTheTopDecileSoThatIsolatedSpikesMoveItLittle) {
  std::vector<double> envelope(10000);
  for (size_t i = 0; i < envelope.size(); ++i) envelope[i] = i % 10 < 4 ? 100 : 1;
  const double clean = envelopeThresholdOf(envelope.data(), 10000);
  EXPECT_NEAR(clean, 50, 1);
  for (size_t i = 500; i < 505; ++i) envelope[i] = 300;
  EXPECT_NEAR(envelopeThresholdOf(envelope.data(), 10000), clean, 1);
}

TEST(EnvelopeThreshold, IsNotANumberForAFlatSignal) {
  const std::vector<double> zeros(1000, 0.0);
  EXPECT_TRUE(std::isnan(envelopeThresholdOf(zeros.data(), 1000)));
  EXPECT_TRUE(std::isnan(envelopeThresholdOf(zeros.data(), 0)));
}

TEST(QuietRuns, AreKeptWhenLongerThanTheMinimumOnly) {
  const std::vector<double> envelope = {0, 0, 9, 0, 0, 0, 9, -9, 0, 0, 0, 0};
  const std::vector<QuietRun> runs = findQuietRuns(envelope.data(), 12, 1.0, 2);
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[0].start, 3);
  EXPECT_EQ(runs[0].length, 3);
  EXPECT_EQ(runs[1].start, 8);
  EXPECT_EQ(runs[1].end(), 12);
}

TEST(QuietRuns, AreNoneWithoutAThreshold) {
  const std::vector<double> envelope(100, 0.0);
  EXPECT_TRUE(findQuietRuns(envelope.data(), 100, std::nan(""), 2).empty());
}

TEST(LengthClasses, JoinTheFirstClassWithinAFactorOfOnePointFour) {
  const std::vector<LengthClass> classes = classifyLengths(runsOfLengths({100, 140, 141, 72, 71}));
  ASSERT_EQ(classes.size(), 3u);
  EXPECT_EQ(classes[0].length, 100);
  EXPECT_EQ(classes[0].count, 3);
  EXPECT_EQ(classes[1].length, 141);
  EXPECT_EQ(classes[2].length, 71);
}

TEST(LengthClasses, MoveInFrontOfRarerOnesButNotOfEquallyFrequentOnes) {
  const std::vector<LengthClass> classes = classifyLengths(runsOfLengths({500, 100, 1000, 100, 1000}));
  EXPECT_EQ(classes[0].length, 100);
  EXPECT_EQ(classes[1].length, 1000);
  EXPECT_EQ(classes[2].length, 500);
}

TEST(QuietBands, TakeARareClassOfLongRunsForNoVolumeGap) {
  EXPECT_FALSE(findQuietBands({{50, 401}, {50000, 3}}).hasVolumeGaps);
  EXPECT_TRUE(findQuietBands({{50, 400}, {50000, 3}}).hasVolumeGaps);
}

TEST(QuietBands, TakeNoVolumeGapWhereTheSecondClassIsNearlyAsFrequent) {
  EXPECT_FALSE(findQuietBands({{50, 30}, {300, 19}}).hasVolumeGaps);
  EXPECT_TRUE(findQuietBands({{50, 31}, {300, 19}}).hasVolumeGaps);
}

TEST(QuietBands, ReachAFactorOfOnePointFourWidenedToWholeSamples) {
  const LengthBand band = LengthBand::around(100);
  EXPECT_EQ(band.lower, 71);
  EXPECT_EQ(band.upper, 140);
  EXPECT_TRUE(band.contains(71));
  EXPECT_FALSE(band.contains(70));
}

TEST(SliceCounts, AreZeroWithoutAnyRun) {
  const std::vector<QuietRun> none;
  EXPECT_FALSE(findQuietBands(classifyLengths(none)).hasVolumeGaps);
  EXPECT_EQ(countWithVolumeGaps(none, {}).nrOfVolumes, 0);
}

} // namespace emeg
