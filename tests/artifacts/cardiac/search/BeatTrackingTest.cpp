#include "artifacts/cardiac/search/BeatTracking.h"

#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/Energy.h"
#include "tests/artifacts/cardiac/TestRecordings.h"
#include "tests/artifacts/reference/LiteralDetectionSignal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

void expectSameBeats(const TestRecording& recording, const HeartPeriod& heart) {
  SCOPED_TRACE(recording.name + ", period " + std::to_string(heart.period));
  EXPECT_EQ(trackBeats(recording.view(), heart),
            literalTrackBeats(recording.channels, recording.length, literalOf(heart)));
}

/// With the period that the recording shows.
void expectSameBeats(const std::vector<TestRecording>& recordings) {
  for (const TestRecording& recording : recordings)
    expectSameBeats(recording, estimateHeartPeriod(recording.view()));
}

std::vector<int32_t> beatsOf(const std::vector<std::vector<double>>& channels, const HeartPeriod& heart) {
  return trackBeats(makeRecording("", channels, 50).view(), heart);
}

TEST(BeatWeights, AreThoseOfThePlainVersion) {
  for (const int32_t period : {1, 2, 3, 10, 107, 250, 429})
    EXPECT_EQ(beatWeights(period), literalGaussianWeights(period)) << period;
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionInSimulatedRecordings) {
  expectSameBeats(simulatedRecordings());
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionInNoise) {
  expectSameBeats(noiseRecordings(1, 150));
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionWhereScoresAreEqualButForRounding) {
  expectSameBeats(tiedRecordings());
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionWithDeadChannels) {
  expectSameBeats(impairedRecordings());
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionInShortRecordings) {
  expectSameBeats(shortRecordings());
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionForHugeAndTinySamples) {
  expectSameBeats(extremeRecordings());
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionWithAPeriodThatIsNotTheHearts) {
  for (const TestRecording& recording : noiseRecordings(1000, 12))
    for (const int32_t period : {1, 2, 3, 7, 20, 61}) expectSameBeats(recording, heartOfPeriod(period));
  for (const TestRecording& recording : tiedRecordings()) expectSameBeats(recording, heartOfPeriod(33));
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionWhateverTheAcceptedIntervals) {
  const TestRecording recording = noiseRecordings(2000, 1).front();
  for (const HeartPeriod& heart : {HeartPeriod{9, 9, 9}, HeartPeriod{9, 8, 9}, HeartPeriod{9, 8, 10},
                                   HeartPeriod{9, 1, 60}, HeartPeriod{9, 30, 31}})
    expectSameBeats(recording, heart);
}

TEST(BeatTracking, DoesNotReadBehindTheEndOfTheSeries) {
  std::vector<double> channel = beatingChannel(1000, 1);
  const HeartPeriod heart = heartOfPeriod(50);
  const std::vector<int32_t> expected = beatsOf({channel}, heart);
  const std::vector<std::vector<double>> longer{beatingChannel(1300, 1)};
  EXPECT_EQ(trackBeats({longer, 1000, 50}, heart), literalTrackBeats(longer, 1000, literalOf(heart)));
  std::vector<std::vector<double>> followed{channel};
  followed[0].insert(followed[0].end(), 300, 1e6);
  EXPECT_EQ(trackBeats({followed, 1000, 50}, heart), expected);
}

TEST(BeatTracking, StartsThreePeriodsBehindTheStartAndFollowsTheMedianChannel) {
  const std::vector<int32_t> beats = beatsOf({beatingChannel(3000, 1)}, heartOfPeriod(50));
  ASSERT_THAT(beats, SizeIs(::testing::Gt(50U)));
  for (size_t k = 1; k < beats.size(); ++k) {
    EXPECT_GE(beats[k] - beats[k - 1], 35);
    EXPECT_LE(beats[k] - beats[k - 1], 71);
  }
  EXPECT_GT(beats.back(), 3000 - 100 - 71 - 71);
}

TEST(BeatTracking, GivesAChannelWithoutAnInteriorMaximumThePreviousInterval) {
  // Two accepted intervals leave no room for an interior maximum.
  const std::vector<int32_t> beats = beatsOf({beatingChannel(600, 1)}, {50, 49, 50});
  ASSERT_GT(beats.size(), 5U);
  for (size_t k = 1; k < beats.size(); ++k) EXPECT_EQ(beats[k] - beats[k - 1], 50);
}

TEST(BeatTracking, ChoosesTheFirstOfEqualMaximaAndNoPlateau) {
  // The first beat, 9, has an empty segment, so that the score is a bump around every impulse behind it.
  const HeartPeriod heart{3, 1, 40};
  const auto firstInterval = [&](const std::vector<int32_t>& places) {
    const TestRecording recording = makeRecording("", {impulses(56, places)}, 50);
    expectSameBeats(recording, heart);
    const std::vector<int32_t> beats = trackBeats(recording.view(), heart);
    return beats[1] - beats[0];
  };
  EXPECT_EQ(firstInterval({21}), 12);
  EXPECT_EQ(firstInterval({21, 39}), 12);
  // Two equal scores side by side are no maximum: the previous interval stays, or another maximum wins.
  EXPECT_EQ(firstInterval({21, 22}), 3);
  EXPECT_EQ(firstInterval({21, 22, 39}), 30);
}

TEST(BeatTracking, NeverChoosesTheShortestOrTheLongestIntervalItself) {
  for (uint32_t seed = 0; seed < 100; ++seed) {
    const TestRecording recording = noiseRecordings(seed + 3000, 1).front();
    const std::vector<int32_t> beats = trackBeats(recording.view(), {10, 8, 12});
    for (size_t k = 1; k < beats.size(); ++k) {
      EXPECT_GE(beats[k] - beats[k - 1], 9);
      EXPECT_LE(beats[k] - beats[k - 1], 11);
    }
  }
}

TEST(BeatTracking, ShiftsEveryBeatTheFirstOneIncluded) {
  const std::vector<std::vector<double>> channels{beatingChannel(400, 3)};
  const HeartPeriod heart = heartOfPeriod(50);
  const LiteralTracking tracking = literalTracking(channels, 400, literalOf(heart));
  const std::vector<int32_t> beats = beatsOf(channels, heart);
  EXPECT_EQ(beats, tracking.beats);
  EXPECT_NE(beats.front(), 150);
  int32_t first = 150;
  for (const int32_t shift : tracking.shifts) first -= shift;
  EXPECT_EQ(beats.front(), first);
}

TEST(BeatTracking, LeavesAlignedBeatsWhereTheyAre) {
  // A peak at every beat: the slopes are most consistent around the peaks, where the beats already stand.
  std::vector<double> channel(1000, 0.0);
  for (int32_t i = 0; i < 1000; ++i) {
    const int32_t phase = (i + 10) % 20 - 10;
    channel[static_cast<size_t>(i)] = -phase * phase;
  }
  const LiteralTracking tracking = literalTracking({channel}, 1000, literalOf(heartOfPeriod(20)));
  const std::vector<int32_t> beats = beatsOf({channel}, heartOfPeriod(20));
  EXPECT_EQ(beats, tracking.beats);
  EXPECT_THAT(tracking.shifts, ::testing::Contains(0));
}

TEST(BeatTracking, EndsWithTheStartingBeatInARecordingWithoutRoomForMore) {
  const HeartPeriod heart = heartOfPeriod(50);
  for (const int32_t length : {1, 50, 149, 150, 151, 320, 321})
    EXPECT_THAT(beatsOf({beatingChannel(length, 4)}, heart), ElementsAre(150)) << length;
  EXPECT_GT(beatsOf({beatingChannel(322, 4)}, heart).size(), 1U);
}

TEST(BeatTracking, LetsDeadChannelsVoteThePreviousIntervalAndNoShift) {
  const std::vector<double> beating = beatingChannel(3000, 2);
  const std::vector<double> dead(3000, 0.0);
  const std::vector<int32_t> beats = beatsOf({beating, dead, dead}, heartOfPeriod(50));
  // Two of three vote for the interval before; if they voted for a shift as well, the beats would come to
  // stand at the start for ever.
  EXPECT_LT(beats.size(), 100U);
  for (size_t k = 1; k < beats.size(); ++k) EXPECT_EQ(beats[k] - beats[k - 1], 50);
}

TEST(BeatTracking, EndsAtTenThousandBeats) {
  // Where all is flat every alignment ties, the first one wins, and the beats never get ahead.
  for (const TestRecording& recording : stuckRecordings()) {
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    EXPECT_THAT(trackBeats(recording.view(), heart), SizeIs(10000)) << recording.name;
    expectSameBeats(recording, heart);
  }
  EXPECT_EQ(maxNrOfTrackedBeats, 10000U);
}

TEST(BeatTracking, EndsOnEveryInput) {
  for (uint32_t seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    std::vector<double> channel(200, 0.0);
    for (uint32_t k = random() % 10U; k > 0; --k)
      channel[random() % 200U] = static_cast<double>(random() % 5U) - 2;
    const std::vector<int32_t> beats = beatsOf({channel}, heartOfPeriod(2 + static_cast<int32_t>(seed % 9)));
    EXPECT_GE(beats.size(), 1U);
    EXPECT_LE(beats.size(), 10000U);
  }
}

TEST(BeatTracking, FindsNothingWithoutAPeriod) {
  EXPECT_THAT(beatsOf({beatingChannel(1000, 1)}, {0, 0, 0}), IsEmpty());
}

TEST(BeatTracking, TreatsAChannelWithoutANumberLikeADeadOne) {
  const std::vector<double> beating = beatingChannel(1500, 2);
  const HeartPeriod heart = heartOfPeriod(50);
  EXPECT_EQ(beatsOf({beating, std::vector<double>(1500, notANumber)}, heart),
            beatsOf({beating, std::vector<double>(1500, 0.0)}, heart));
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionAmongInfiniteSamples) {
  for (const size_t place : std::vector<size_t>{0, 150, 400, 1499}) {
    std::vector<double> channel = beatingChannel(1500, 2);
    channel[place] = place == 400 ? -infinite : infinite;
    expectSameBeats(makeRecording("infinite at " + std::to_string(place), {channel}, 50), heartOfPeriod(50));
  }
}

TEST(BeatTracking, FindsTheBeatsOfThePlainVersionInAChannelWithASampleThatIsNotANumber) {
  std::vector<double> channel = beatingChannel(1500, 2);
  channel[400] = notANumber;
  expectSameBeats(makeRecording("one undefined sample", {channel}, 50), heartOfPeriod(50));
}

TEST(BeatTracking, SurvivesSamplesThatAreNotNumbers) {
  for (const size_t place : std::vector<size_t>{0, 150, 400, 1499}) {
    std::vector<double> channel = beatingChannel(1500, 2);
    channel[place] = notANumber;
    const std::vector<int32_t> beats = beatsOf({channel, beatingChannel(1500, 3)}, heartOfPeriod(50));
    EXPECT_GE(beats.size(), 1U);
    EXPECT_LE(beats.size(), 10000U);
  }
}

TEST(BcgSeries, CountsSamplesOutsideAsZero) {
  const std::vector<double> samples{1, 2, 3, 99};
  const auto window = [&](int64_t first, int64_t count) {
    std::vector<double> out(static_cast<size_t>(count), -1.0);
    copyWindow(samples.data(), 3, first, count, out.data());
    return out;
  };
  EXPECT_THAT(window(0, 3), ElementsAre(1, 2, 3));
  EXPECT_THAT(window(-2, 7), ElementsAre(0, 0, 1, 2, 3, 0, 0));
  EXPECT_THAT(window(1, 3), ElementsAre(2, 3, 0));
  EXPECT_THAT(window(-1, 2), ElementsAre(0, 1));
  EXPECT_THAT(window(-9, 2), ElementsAre(0, 0));
  EXPECT_THAT(window(3, 2), ElementsAre(0, 0));
  EXPECT_THAT(window(50, 2), ElementsAre(0, 0));
  EXPECT_THAT(window(1, 0), IsEmpty());
}

TEST(BcgSeries, HasNoEnergyWhereEverySquareVanishes) {
  const auto energetic = [](const std::vector<double>& samples, int64_t length) {
    return hasEnergy(samples.data(), length);
  };
  EXPECT_FALSE(energetic({0, -0.0, 0, 5}, 3));
  EXPECT_FALSE(energetic({1e-200, -1e-200}, 2));
  EXPECT_FALSE(energetic({notANumber, notANumber}, 2));
  EXPECT_TRUE(energetic({0, 0, -1e-100}, 3));
  EXPECT_TRUE(energetic({infinite}, 1));
  EXPECT_FALSE(energetic({1}, 0));
}

TEST(BcgSeries, NormalisesASegmentWithoutEnergyByZero) {
  EXPECT_EQ(normFactor(4), 0.5);
  EXPECT_EQ(normFactor(0), 0);
  EXPECT_EQ(normFactor(infinite), 0);
  EXPECT_EQ(normFactor(notANumber), 0);
}

} // namespace
} // namespace emeg
