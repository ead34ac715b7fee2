#include "artifacts/cardiac/search/HeartPeriod.h"

#include "artifacts/cardiac/search/BeatTracking.h"
#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/PulseSelection.h"
#include "tests/artifacts/cardiac/TestRecordings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {
namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

void expectSamePeriods(const std::vector<TestRecording>& recordings) {
  for (const TestRecording& recording : recordings) {
    SCOPED_TRACE(recording.name);
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    const LiteralPeriod literal = literalHeartPeriod(recording.channels, recording.length, recording.rate);
    EXPECT_EQ(heart.period, literal.period);
    EXPECT_EQ(heart.shortest, literal.shortest);
    EXPECT_EQ(heart.longest, literal.longest);
    EXPECT_EQ(heart.beatsPerMinute(recording.rate), literal.beatsPerMinute);
  }
}

int32_t periodOf(const std::vector<std::vector<double>>& channels, float rate = 250) {
  return estimateHeartPeriod(makeRecording("", channels, rate).view()).period;
}

TEST(HeartPeriod, IsThatOfThePlainVersionInSimulatedRecordings) {
  expectSamePeriods(simulatedRecordings());
}

TEST(HeartPeriod, IsThatOfThePlainVersionInNoise) {
  expectSamePeriods(noiseRecordings(1, 300));
}

TEST(HeartPeriod, IsThatOfThePlainVersionWhereSumsAreEqualButForRounding) {
  expectSamePeriods(tiedRecordings());
}

TEST(HeartPeriod, IsThatOfThePlainVersionWithDeadChannels) {
  expectSamePeriods(impairedRecordings());
  expectSamePeriods(stuckRecordings());
}

TEST(HeartPeriod, IsThatOfThePlainVersionInShortRecordings) {
  expectSamePeriods(shortRecordings());
}

TEST(HeartPeriod, IsThatOfThePlainVersionForHugeAndTinySamples) {
  expectSamePeriods(extremeRecordings());
}

TEST(HeartPeriod, IsThatOfThePlainVersionAtEveryRateOfTheSeries) {
  std::vector<TestRecording> recordings;
  for (const float rate : {0.5F, 1.0F, 3.0F, 17.3F, 100.0F, 128.0F, 249.5F, 250.0F, 333.0F, 499.0F, 500.0F})
    recordings.push_back(makeRecording(std::to_string(rate), {beatingChannel(3001, 3)}, rate));
  expectSamePeriods(recordings);
}

TEST(HeartPeriod, OfACosineAtOneHertzIsASecond) {
  std::vector<double> channel;
  for (int i = 0; i < 15000; ++i) channel.push_back(std::cos(2 * 3.14159265358979323846 * i / 250.0));
  const HeartPeriod heart = estimateHeartPeriod(makeRecording("", {channel}, 250).view());
  EXPECT_EQ(heart.period, 250);
  EXPECT_EQ(heart.shortest, 177);
  EXPECT_EQ(heart.longest, 354);
  EXPECT_EQ(heart.beatsPerMinute(250), 60.0);
}

TEST(HeartPeriod, IsTheSmallestLagAmongEqualSums) {
  EXPECT_EQ(periodOf({impulses(5000, {1000, 1150, 1350})}), 150);
  EXPECT_EQ(periodOf({impulses(5000, {})}), 107);
}

TEST(HeartPeriod, IsSearchedFrom140DownTo35BeatsPerMinuteBothIncluded) {
  EXPECT_EQ(periodOf({impulses(5000, {1000, 1106, 1535})}), 429);
  EXPECT_EQ(periodOf({impulses(5000, {1000, 1106, 1536})}), 107);
  EXPECT_EQ(periodOf({impulses(5000, {1000, 1107, 1536})}), 107);
}

TEST(HeartPeriod, IsFoundInTheMiddleOfTheRecordingBothEdgesIncluded) {
  EXPECT_EQ(periodOf({impulses(5000, {749, 949})}), 107);
  EXPECT_EQ(periodOf({impulses(5000, {750, 950})}), 200);
  EXPECT_EQ(periodOf({impulses(5000, {4250, 4450})}), 200);
  EXPECT_EQ(periodOf({impulses(5000, {4251, 4451})}), 107);
}

TEST(HeartPeriod, ClipsTheSumsOfARecordingShorterThanElevenSecondsAtItsEnd) {
  // What stands behind the end would make any other lag win.
  EXPECT_EQ(periodOf({impulses(500, {100, 350})}), 250);
  EXPECT_EQ(periodOf({impulses(2800, {2370, 2799})}), 429);
}

TEST(HeartPeriod, OfAChannelWithoutANumberIsThatOfTheChannelBefore) {
  const std::vector<double> undefined(5000, notANumber);
  const std::vector<double> good = impulses(5000, {1000, 1200});
  const std::vector<double> other = impulses(5000, {1000, 1300});
  EXPECT_EQ(periodOf({good, undefined, other}), 200);
  EXPECT_EQ(periodOf({other, undefined, good}), 300);
}

TEST(HeartPeriod, OfAChannelWithoutASumAbove1e60BelowZeroIsThatOfTheChannelBefore) {
  // One large sample; all that it is multiplied with is negative.
  std::vector<double> negative(5000, 0.0);
  negative[2000] = 1e50;
  std::fill(negative.begin() + 2107, negative.begin() + 2430, -1e12);
  EXPECT_EQ(periodOf({negative}), 0);
  EXPECT_EQ(periodOf({impulses(5000, {1000, 1200}), negative, negative}), 200);
  // The same with sums above the limit.
  std::fill(negative.begin() + 2107, negative.begin() + 2430, -1e9);
  EXPECT_GT(periodOf({negative}), 0);
}

TEST(HeartPeriod, StartsAtZeroForAFirstChannelWithoutANumber) {
  const std::vector<double> undefined(5000, notANumber);
  EXPECT_EQ(periodOf({undefined}), 0);
  // 0 and 200: the upper median.
  EXPECT_EQ(periodOf({undefined, impulses(5000, {1000, 1200})}), 200);
  EXPECT_EQ(periodOf({undefined, undefined, impulses(5000, {1000, 1200})}), 0);
}

TEST(HeartPeriod, OfZeroIsZeroBeatsPerMinuteAndLeadsToNoPulses) {
  const TestRecording recording = makeRecording("", {std::vector<double>(5000, notANumber)}, 250);
  const HeartPeriod heart = estimateHeartPeriod(recording.view());
  EXPECT_EQ(heart.period, 0);
  EXPECT_EQ(heart.shortest, 0);
  EXPECT_EQ(heart.longest, 0);
  EXPECT_EQ(heart.beatsPerMinute(250), 0.0);
  EXPECT_THAT(trackBeats(recording.view(), heart), ::testing::IsEmpty());
  const std::vector<float> signal = buildPulseDetectionSignal(recording.view(), heart);
  EXPECT_THAT(signal, ::testing::IsEmpty());
  EXPECT_THAT(selectHeartPulses(signal, 250, 35, heart, 3000).positions, ::testing::IsEmpty());
}

TEST(HeartPeriod, IsZeroWithoutChannels) {
  const std::vector<std::vector<double>> none;
  EXPECT_EQ(estimateHeartPeriod({none, 5000, 250}).period, 0);
}

TEST(HeartPeriod, OfOneChannelIsItsOwnAndOfTwoTheLarger) {
  const std::vector<double> a = impulses(5000, {1000, 1300});
  const std::vector<double> b = impulses(5000, {1000, 1200});
  EXPECT_EQ(periodOf({a}), 300);
  EXPECT_EQ(periodOf({b}), 200);
  EXPECT_EQ(periodOf({a, b}), 300);
  EXPECT_EQ(periodOf({b, a}), 300);
}

TEST(HeartPeriod, IsTheMedianWhateverTheOrderOfTheChannels) {
  const std::vector<double> a = impulses(5000, {1000, 1300});
  const std::vector<double> b = impulses(5000, {1000, 1200});
  const std::vector<double> c = impulses(5000, {1000, 1250});
  for (const auto& channels : {std::vector{a, b, c}, {a, c, b}, {b, a, c}, {b, c, a}, {c, a, b}, {c, b, a}})
    EXPECT_EQ(periodOf(channels), 250);
}

TEST(HeartPeriod, OfARecordingWithInfiniteSamplesIsOneOfThoseSearched) {
  std::vector<double> channel = beatingChannel(2000, 5);
  channel[1000] = infinite;
  // Where the partner of the infinite sample is positive the sum is infinite too; the first such lag wins.
  const LiteralPeriod literal = literalHeartPeriod({channel}, 2000, 50);
  EXPECT_EQ(periodOf({channel}, 50), literal.period);
  EXPECT_GE(literal.period, 21);
  EXPECT_LE(literal.period, 86);
}

TEST(HeartPeriod, IsThatOfThePlainVersionForAnInfiniteSampleWithoutAPartner) {
  // The lags at which the partner of sample 420 lies behind the end.
  std::vector<double> channel = beatingChannel(500, 5);
  channel[420] = infinite;
  expectSamePeriods({makeRecording("infinite", {channel}, 250)});
}

} // namespace
} // namespace emeg
