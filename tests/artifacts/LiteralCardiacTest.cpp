#include "tests/artifacts/reference/LiteralDetectionSignal.h"
#include "tests/artifacts/reference/LiteralHeartPeriod.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace emeg {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double pi = 3.14159265358979323846;
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Zero but for unit impulses.
std::vector<double> impulses(int32_t length, const std::vector<int32_t>& positions) {
  std::vector<double> channel(static_cast<std::size_t>(length), 0.0);
  for (const int32_t p : positions) channel[static_cast<std::size_t>(p)] = 1.0;
  return channel;
}

// --- heart period

TEST(LiteralHeartPeriod, FindsThePeriodOfACosine) {
  std::vector<double> channel;
  for (int i = 0; i < 15000; ++i) channel.push_back(std::cos(2 * pi * i / 250.0));
  const LiteralPeriod heart = literalHeartPeriod({channel}, 15000, 250.0F);
  EXPECT_EQ(heart.period, 250);
  EXPECT_EQ(heart.shortest, 177);
  EXPECT_EQ(heart.longest, 354);
  EXPECT_EQ(heart.beatsPerMinute, 60.0);
}

TEST(LiteralHeartPeriod, TakesTheSmallestLagAmongEqualSums) {
  // The lags 150, 200 and 350 occur once each.
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1150, 1350}), 5000, 250.0F, 0), 150);
  EXPECT_EQ(literalHeartPeriod({impulses(5000, {})}, 5000, 250.0F).period, 107);
}

TEST(LiteralHeartPeriod, SearchesFrom140DownTo35BeatsPerMinute) {
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1106, 1535}), 5000, 250.0F, 0), 429);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1106, 1536}), 5000, 250.0F, 0), 107);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {1000, 1107, 1537}), 5000, 250.0F, 0), 107);
}

TEST(LiteralHeartPeriod, CorrelatesTheMiddleOfTheRecording) {
  // Samples 750 ... 4250 are each other's first partner.
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {749, 749 + 200}), 5000, 250.0F, 0), 107);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {750, 750 + 200}), 5000, 250.0F, 0), 200);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {4250, 4250 + 200}), 5000, 250.0F, 0), 200);
  EXPECT_EQ(literalChannelPeriod(impulses(5000, {4251, 4251 + 200}), 5000, 250.0F, 0), 107);
}

TEST(LiteralHeartPeriod, ClipsTheSumsOfAShortRecordingAtItsEnd) {
  EXPECT_EQ(literalChannelPeriod(impulses(500, {100, 350}), 500, 250.0F, 0), 250);
}

TEST(LiteralHeartPeriod, GivesAnUnusableChannelThePeriodOfTheOneBefore) {
  const std::vector<double> unusable(5000, notANumber);
  const std::vector<double> good = impulses(5000, {1000, 1200});
  EXPECT_THAT(literalHeartPeriod({good, unusable}, 5000, 250.0F).channelPeriods, ElementsAre(200, 200));
  const LiteralPeriod none = literalHeartPeriod({unusable}, 5000, 250.0F);
  EXPECT_EQ(none.period, 0);
  EXPECT_EQ(none.shortest, 0);
  EXPECT_EQ(none.beatsPerMinute, 0.0);
}

TEST(LiteralHeartPeriod, IsTheUpperMedianOfTheChannelsAndLeavesThemSorted) {
  const std::vector<double> a = impulses(5000, {1000, 1300});
  const std::vector<double> b = impulses(5000, {1000, 1200});
  const std::vector<double> c = impulses(5000, {1000, 1250});
  EXPECT_EQ(literalHeartPeriod({a, b}, 5000, 250.0F).period, 300);
  const LiteralPeriod heart = literalHeartPeriod({a, b, c}, 5000, 250.0F);
  EXPECT_EQ(heart.period, 250);
  EXPECT_THAT(heart.channelPeriods, ElementsAre(200, 250, 300));
}

// --- detection signal

TEST(LiteralDetectionSignal, CountsSamplesOutsideTheSeriesAsZero) {
  const std::vector<double> channel{3, 4, 0, 0, 0, 0};
  EXPECT_EQ(literalNormFactor(channel, 6, 0, 1), 0.2);
  EXPECT_EQ(literalNormFactor(channel, 6, 4, 1), 0.0);
  EXPECT_EQ(literalNormFactor(channel, 6, -7, 1), 0.0);
}

TEST(LiteralDetectionSignal, AddsTheNormalisedSegmentAndItsSlopes) {
  const std::vector<double> channel{0, 1, 2, 1, 0};
  LiteralTrackedChannel tracked{std::vector<double>(5, 0.0), std::vector<double>(5, 0.0), true};
  literalAddBeat(tracked, channel, 5, 2, 1);
  const double f = 1.0 / std::sqrt(6.0);
  EXPECT_THAT(tracked.runningTemplate, ElementsAre(0, f, 2 * f, f, 0));
  EXPECT_THAT(tracked.slopeVotes, ElementsAre(1, 1, -1, -1, -1));
}

TEST(LiteralDetectionSignal, ChoosesTheHighestInteriorMaximumOfTheScores) {
  EXPECT_EQ(literalIntervalChoice({1, 2, 1, 3, 1}, 7, 99), 10);
  EXPECT_EQ(literalIntervalChoice({1, 2, 1, 2, 1}, 7, 99), 8);
  EXPECT_EQ(literalIntervalChoice({5, 1, 1, 1, 6}, 7, 99), 99);
  EXPECT_EQ(literalIntervalChoice({1, 2, 2, 1}, 7, 99), 99);
  EXPECT_EQ(literalIntervalChoice({1}, 7, 99), 99);
}

TEST(LiteralDetectionSignal, AlignsOnTheUnanimousSlopesAndTakesTheFirstOfEquals) {
  LiteralTrackedChannel tracked{std::vector<double>(5, 0.0), {0, 0, 0, 2, 0}, true};
  EXPECT_EQ(literalAlignmentChoice(literalAlignmentCosts(tracked, 2, 1), 1), 1);
  tracked.slopeVotes = {-2, 2, 2, -2, 2};
  EXPECT_EQ(literalAlignmentChoice(literalAlignmentCosts(tracked, 2, 1), 1), -1);
}

/// A biphasic wave per beat and a little noise; the intervals vary by two samples around 50.
struct BeatingChannel {
  std::vector<int32_t> beats;
  std::vector<double> samples;

  BeatingChannel(int32_t length, uint32_t seed) : samples(static_cast<std::size_t>(length), 0.0) {
    std::mt19937 random(seed);
    for (double& sample : samples) sample = 0.001 * static_cast<double>(random() % 1000U) - 0.5;
    for (int32_t beat = 20, n = 0; beat < length - 20; beat += 48 + 2 * (++n * 7 % 3)) {
      beats.push_back(beat);
      for (int32_t j = -20; j <= 20; ++j)
        samples[static_cast<std::size_t>(beat + j)] += 4.0 * j * std::exp(-j * j / 50.0);
    }
  }
};

LiteralPeriod fiftySamples() {
  return LiteralPeriod{{}, 50, 35, 71, 300};
}

TEST(LiteralDetectionSignal, TracksBeatsAtAConstantDistanceFromTheTrueOnes) {
  const BeatingChannel channel(3000, 1);
  const std::vector<int32_t> tracked = literalTrackBeats({channel.samples}, 3000, fiftySamples());
  ASSERT_GT(tracked.size(), 45U);
  std::vector<int32_t> distances;
  for (const int32_t beat : tracked) {
    const auto after = std::upper_bound(channel.beats.begin(), channel.beats.end(), beat + 25);
    ASSERT_NE(after, channel.beats.begin());
    distances.push_back(beat - *(after - 1));
  }
  std::sort(distances.begin(), distances.end());
  EXPECT_LE(distances.back() - distances.front(), 4);
}

TEST(LiteralDetectionSignal, AlignsByTheChannelsWithEnergyAlone) {
  const BeatingChannel channel(3000, 2);
  const std::vector<double> dead(3000, 0.0);
  const LiteralTracking tracking = literalTracking({channel.samples, dead, dead}, 3000, fiftySamples());
  EXPECT_THAT(tracking.intervals, Each(50)); // two of three vote for the previous interval
  EXPECT_LT(tracking.beats.size(), 100U);
}

TEST(LiteralDetectionSignal, RotatesWhatItKnowsAlongWithTheShift) {
  const BeatingChannel channel(400, 3);
  const LiteralTracking tracking = literalTracking({channel.samples}, 400, fiftySamples());
  ASSERT_GE(tracking.shifts.size(), 1U);
  ASSERT_EQ(tracking.beats.size(), tracking.shifts.size() + 1);
  int32_t first = 150;
  for (const int32_t shift : tracking.shifts) first -= shift;
  EXPECT_EQ(tracking.beats.front(), first);
  for (std::size_t k = 1; k < tracking.beats.size(); ++k)
    EXPECT_EQ(tracking.beats[k] - tracking.beats[k - 1], tracking.intervals[k - 1]);

  // What was there with the first beat alone, moved by the one shift that followed the second.
  const LiteralTracking two = literalTracking({channel.samples}, 150 + 100 + 71 + 1, fiftySamples());
  ASSERT_EQ(two.shifts.size(), 1U);
  const int32_t shift = two.shifts[0];
  ASSERT_NE(shift, 0);
  const int32_t length = 150 + 100 + 71 + 1;
  LiteralTrackedChannel still{std::vector<double>(201, 0.0), std::vector<double>(201, 0.0), true};
  literalAddBeat(still, channel.samples, length, 150, 50);
  literalAddBeat(still, channel.samples, length, 150 + two.intervals[0], 50);
  for (int32_t k = 0; k < 201; ++k) {
    const std::size_t to = static_cast<std::size_t>((k + shift + 201) % 201);
    EXPECT_EQ(two.channels[0].runningTemplate[to], still.runningTemplate[static_cast<std::size_t>(k)]);
    EXPECT_EQ(two.channels[0].slopeVotes[to], still.slopeVotes[static_cast<std::size_t>(k)]);
  }
}

TEST(LiteralDetectionSignal, StopsTrackingAtTenThousandBeats) {
  // In a flat stretch every alignment ties, the first one wins, and the beats never get ahead.
  const LiteralPeriod heart{{}, 10, 7, 14, 1500};
  const std::vector<int32_t> beats = literalTrackBeats({impulses(300, {290})}, 300, heart);
  EXPECT_EQ(beats.size(), 10000U);
  EXPECT_EQ(beats.back(), 30);
}

TEST(LiteralDetectionSignal, TracksOneBeatInAShortRecordingAndHasNoTemplateThen) {
  const BeatingChannel channel(321, 4);
  const std::vector<int32_t> beats = literalTrackBeats({channel.samples}, 321, fiftySamples());
  EXPECT_THAT(beats, ElementsAre(150));
  const LiteralBeatTemplate beat = literalBeatTemplate(channel.samples, 321, beats, 50);
  EXPECT_THAT(beat.resemblance, ElementsAre(0.0));
  EXPECT_EQ(beat.threshold, 0.0);
  EXPECT_THAT(beat.selected, ElementsAre(false));
  EXPECT_THAT(beat.samples, Each(0.0));
  const std::vector<float> signal = literalDetectionSignal({channel.samples}, 321, fiftySamples());
  EXPECT_EQ(signal.size(), 321U);
  EXPECT_THAT(signal, Each(0.0F));
}

TEST(LiteralDetectionSignal, BuildsTheTemplateFromTheBeatsThatResembleEachOther) {
  std::vector<double> channel(40, 0.0);
  channel[10] = 2;
  channel[20] = 4;
  channel[30] = -8;
  const LiteralBeatTemplate beat = literalBeatTemplate(channel, 40, {10, 20, 30}, 1);
  const double g = literalGaussianWeights(1)[1];
  EXPECT_EQ(g, 1.0 / 3.0);
  EXPECT_THAT(beat.resemblance, ElementsAre(0.0, 0.0, 2 * g));
  EXPECT_GT(beat.threshold, 0.0);
  EXPECT_LT(beat.threshold, 1e-4);
  EXPECT_THAT(beat.selected, ElementsAre(true, true, false));
  EXPECT_THAT(beat.samples, ElementsAre(0, 2, 0));
}

TEST(LiteralDetectionSignal, CorrelatesEverySegmentWithTheTemplate) {
  const std::vector<double> channel{5, 0, 3, 4, 0, 0, 0, 0, 6, 8};
  const std::vector<float> signal = literalChannelSignal(channel, 10, {0, 2, 0}, 1);
  EXPECT_THAT(signal,
              ElementsAre(0.0F, 0.0F, static_cast<float>(-2.0 / 5.0), static_cast<float>(-8.0 / 3.0 / 5.0),
                          0.0F, 0.0F, 0.0F, 0.0F, static_cast<float>(-4.0 / 10.0), 0.0F));
}

TEST(LiteralDetectionSignal, TakesTheUpperMedianOfTheChannels) {
  EXPECT_THAT(literalMedianSignal({{1, 5}, {3, 2}}, 2), ElementsAre(3.0F, 5.0F));
  EXPECT_THAT(literalMedianSignal({{1, 5}, {3, 2}, {2, 4}}, 2), ElementsAre(2.0F, 4.0F));
}

TEST(LiteralDetectionSignal, IsEmptyWithoutAPeriodOrWithoutEnergy) {
  const std::vector<double> dead(3000, 0.0);
  EXPECT_THAT(literalDetectionSignal({dead, dead}, 3000, fiftySamples()), IsEmpty());
  EXPECT_THAT(literalDetectionSignal({BeatingChannel(3000, 5).samples}, 3000, LiteralPeriod{}), IsEmpty());
}

// --- pulse selection

/// A flat signal with minima of one sample each; the value of each is minus its depth.
struct Minimum {
  int32_t position;
  float depth;
};

std::vector<float> signalWith(int32_t length, const std::vector<Minimum>& minima) {
  std::vector<float> signal(static_cast<std::size_t>(length), 0.0F);
  for (const Minimum& m : minima) signal[static_cast<std::size_t>(m.position)] = -m.depth;
  return signal;
}

std::vector<float> signalAt(int32_t length, const std::vector<int32_t>& positions) {
  std::vector<float> signal(static_cast<std::size_t>(length), 0.0F);
  for (const int32_t p : positions) signal[static_cast<std::size_t>(p)] = -1.0F;
  return signal;
}

LiteralPeriod hundredSamples() {
  return LiteralPeriod{{}, 100, 71, 141, 150};
}

LiteralPathSearch searchAmong(const std::vector<int32_t>& candidates, const std::vector<int8_t>& marks) {
  return LiteralPathSearch{candidates, marks, 10000, 71, 141};
}

TEST(LiteralPulseSelection, FindsNothingInAFlatSignal) {
  const std::vector<float> flat(1000, -1.0F);
  EXPECT_THAT(literalCandidates(flat, 250.0F), IsEmpty());
  EXPECT_THAT(literalPulsePositions(flat, 1000, 250.0F, hundredSamples()), IsEmpty());
  EXPECT_THAT(literalPulsePositions({}, 1000, 250.0F, hundredSamples()), IsEmpty());
}

TEST(LiteralPulseSelection, TakesStrictMinimaInsideTheSignal) {
  std::vector<float> signal{-9, 0, -1, 0, -1, -1, 0, -2, 0, -9};
  signal.resize(100, -9.0F);
  EXPECT_THAT(literalCandidates(signal, 250.0F), ElementsAre(2, 7));
}

TEST(LiteralPulseSelection, BoundsTheCandidatesByTheLowPass) {
  std::vector<float> zigzag;
  for (int i = 0; i < 100; ++i) zigzag.push_back(i % 2 == 0 ? 0.0F : -1.0F);
  const std::vector<int32_t> candidates = literalCandidates(zigzag, 250.0F);
  ASSERT_EQ(candidates.size(), 14U); // 0.4 s at 35 per second
  EXPECT_EQ(candidates.back(), 27);
}

TEST(LiteralPulseSelection, MarksTheDeeperOfTwoFirstAndNeitherOfTwoEquals) {
  const std::vector<float> signal = signalWith(1000, {{100, 1}, {150, 2}, {400, 1}, {430, 1}, {700, 1}});
  const LiteralMarks marked = literalMarks(signal, {100, 150, 400, 430, 700}, 71);
  EXPECT_THAT(marked.marks, ElementsAre(-6, -7, 0, 0, -7));
  EXPECT_THAT(marked.seeds, ElementsAre(1, 4));
}

TEST(LiteralPulseSelection, LooksAsFarAsTheShortestIntervalItself) {
  EXPECT_THAT(literalMarks(signalWith(1000, {{100, 1}, {171, 2}}), {100, 171}, 71).marks,
              ElementsAre(-6, -7));
  EXPECT_THAT(literalMarks(signalWith(1000, {{100, 1}, {172, 2}}), {100, 172}, 71).marks,
              ElementsAre(-7, -7));
}

TEST(LiteralPulseSelection, StopsMarkingAfterSevenPasses) {
  std::vector<Minimum> minima;
  std::vector<int32_t> candidates;
  for (int32_t i = 0; i < 9; ++i) {
    minima.push_back({100 + 5 * i, 1.0F + 0.1F * static_cast<float>(i)});
    candidates.push_back(100 + 5 * i);
  }
  EXPECT_THAT(literalMarks(signalWith(1000, minima), candidates, 71).marks,
              ElementsAre(0, 0, -1, -2, -3, -4, -5, -6, -7));
}

/// Candidates at the running sums of intervals, all of them seeds.
std::vector<LiteralChain> seedChainsOf(const std::vector<int32_t>& intervals) {
  std::vector<int32_t> candidates{100};
  std::vector<int32_t> seeds{0};
  for (const int32_t interval : intervals) {
    candidates.push_back(candidates.back() + interval);
    seeds.push_back(static_cast<int32_t>(seeds.size()));
  }
  return literalSeedChains(candidates, seeds, 141);
}

TEST(LiteralPulseSelection, ChainsSeedsWhoseIntervalsAreAlike) {
  EXPECT_THAT(seedChainsOf({100, 110, 100}), ElementsAre(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(seedChainsOf({100, 118, 100}), ElementsAre(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(seedChainsOf({100, 119, 100}), IsEmpty()); // 2^(1/4) is 1.1892
  EXPECT_THAT(seedChainsOf({100}), IsEmpty());
  EXPECT_THAT(seedChainsOf({}), IsEmpty());
}

TEST(LiteralPulseSelection, BreaksChainsBesideAnInconsistentInterval) {
  EXPECT_THAT(seedChainsOf({100, 100, 100, 130, 100, 100, 100}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(5, 6, 7)));
  EXPECT_THAT(seedChainsOf({100, 100, 130, 100, 100}), IsEmpty());
}

TEST(LiteralPulseSelection, KeepsSeedIntervalsBelowTheLongest) {
  EXPECT_THAT(seedChainsOf({140, 140}), ElementsAre(ElementsAre(0, 1, 2)));
  EXPECT_THAT(seedChainsOf({141, 141}), IsEmpty());
  EXPECT_THAT(seedChainsOf({140, 140, 141}), IsEmpty()); // breaks the interval before it too
}

TEST(LiteralPathSearch, TakesTheCandidateWithTheBestAverageOfThreeBeats) {
  LiteralPathSearch search = searchAmong({1000, 1090, 1100, 1200, 1300, 1400}, {-7, -3, -2, -7, -1, -7});
  EXPECT_EQ(search.forward(0, 100.0, 3), 2); // (-2 - 7 - 1) / 3 against -3 / 1
  EXPECT_EQ(search.pathMarkSum, -10.0);
  EXPECT_EQ(search.pathLength, 3.0);
  EXPECT_EQ(search.forward(0, 100.0, 1), 1);
  EXPECT_EQ(search.pathMarkSum, -3.0);
  EXPECT_EQ(search.pathLength, 1.0);
}

TEST(LiteralPathSearch, TakesTheNearestOfEqualCandidates) {
  LiteralPathSearch search = searchAmong({890, 900, 910, 1000, 1090, 1100}, {0, -3, -3, -7, -3, -3});
  EXPECT_EQ(search.forward(3, 100.0, 3), 4);
  EXPECT_EQ(search.backward(3, 100.0, 3), 2);
}

TEST(LiteralPathSearch, IncludesTheEdgesOfTheWindow) {
  EXPECT_EQ(searchAmong({1000, 1071}, {0, 0}).forward(0, 80.0, 1), 1);
  EXPECT_EQ(searchAmong({1000, 1070}, {0, -7}).forward(0, 80.0, 1), 0);
  EXPECT_EQ(searchAmong({1000, 1141}, {0, 0}).forward(0, 130.0, 1), 1);
  EXPECT_EQ(searchAmong({1000, 1142}, {0, 0}).forward(0, 130.0, 1), 0);
  EXPECT_EQ(searchAmong({929, 1000}, {0, 0}).backward(1, 80.0, 1), 0);
  EXPECT_EQ(searchAmong({859, 1000}, {0, 0}).backward(1, 130.0, 1), 0);
  EXPECT_EQ(searchAmong({858, 1000}, {0, 0}).backward(1, 130.0, 1), 1);
}

TEST(LiteralPathSearch, LeavesAnEmptyWindowForALowerMarkOnly) {
  EXPECT_EQ(searchAmong({1000, 1150}, {-3, -5}).forward(0, 100.0, 3), 1);
  EXPECT_EQ(searchAmong({1000, 1150}, {-3, -3}).forward(0, 100.0, 3), 0);
  EXPECT_EQ(searchAmong({1000, 1050, 1150}, {-7, 0, 0}).forward(0, 100.0, 3), 1);
  EXPECT_EQ(searchAmong({850, 1000}, {-5, -3}).backward(1, 100.0, 3), 0);
  EXPECT_EQ(searchAmong({850, 950, 1000}, {0, 0, -7}).backward(2, 100.0, 3), 1);
}

TEST(LiteralPathSearch, StaysWhenTheWindowStartsBehindTheLastCandidate) {
  EXPECT_EQ(searchAmong({1000, 1050}, {0, -7}).forward(0, 100.0, 3), 0);
  EXPECT_EQ(searchAmong({950, 1000}, {-7, 0}).backward(1, 100.0, 3), 1);
}

TEST(LiteralPathSearch, WalksBackwardAsItWalksForwardInTheMirror) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    LiteralPathSearch search{{}, {}, 2000, 71, 141, 0.35};
    for (int32_t p = 1; p < 1999; p += 2 + static_cast<int32_t>(random() % 60U)) {
      search.candidates.push_back(p);
      search.marks.push_back(static_cast<int8_t>(-static_cast<int>(random() % 8U)));
    }
    LiteralPathSearch mirror = search;
    std::reverse(mirror.marks.begin(), mirror.marks.end());
    std::reverse(mirror.candidates.begin(), mirror.candidates.end());
    for (int32_t& p : mirror.candidates) p = 1999 - p;
    const int32_t last = static_cast<int32_t>(search.candidates.size()) - 1;
    for (int32_t c = 0; c <= last; ++c) {
      const double q = 50.0 + static_cast<double>(random() % 150U);
      ASSERT_EQ(mirror.backward(last - c, q, 3), last - search.forward(c, q, 3));
      ASSERT_EQ(mirror.pathMarkSum, search.pathMarkSum);
      ASSERT_EQ(mirror.pathLength, search.pathLength);
    }
  }
}

TEST(LiteralPulseSelection, WalksBothPathsToTheirSharedRun) {
  EXPECT_THAT(literalSharedRun({1, 3, 5, 6, 8}, {2, 3, 5, 7, 8}), ElementsAre(3, 5));
  EXPECT_THAT(literalSharedRun({1, 3}, {2, 4}), IsEmpty());
  // Only the first common candidate counts, even when a longer run follows.
  EXPECT_THAT(literalSharedRun({2, 3, 5, 6, 7}, {3, 4, 5, 6, 7}), ElementsAre(3));
}

TEST(LiteralPulseSelection, MergesChainsThroughARegularGap) {
  LiteralPathSearch search =
      searchAmong({100, 200, 300, 400, 500, 600, 700, 800, 900}, {-7, -7, -7, -6, -6, -6, -7, -7, -7});
  EXPECT_THAT(literalLinkChainsOnce(search, {{0, 1, 2}, {6, 7, 8}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8)));
}

TEST(LiteralPulseSelection, ExaminesAMergedChainWithTheNextOne) {
  std::vector<int32_t> candidates;
  for (int32_t i = 1; i <= 15; ++i) candidates.push_back(100 * i);
  LiteralPathSearch search = searchAmong(candidates, std::vector<int8_t>(15, -6));
  EXPECT_THAT(literalLinkChainsOnce(search, {{0, 1, 2}, {6, 7, 8}, {12, 13, 14}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14)));
}

TEST(LiteralPulseSelection, LeavesNeighboursAloneThatShareFewerThanThreeBeats) {
  LiteralPathSearch search = searchAmong({100, 200, 300, 400, 500, 600}, std::vector<int8_t>(6, -7));
  EXPECT_THAT(literalLinkChains(search, {{0, 1, 2}, {3, 4, 5}}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5)));
  EXPECT_EQ(search.toleranceExponent, 0.35);
}

TEST(LiteralPulseSelection, ExtendsTheEarlierChainWhereThePathsPart) {
  LiteralPathSearch search = searchAmong({100, 200, 300, 400, 500, 590, 600, 700, 800, 900},
                                         {-7, -7, -7, -7, -7, -5, -2, -1, -1, -1});
  EXPECT_THAT(literalLinkChainsOnce(search, {{0, 1, 2}, {7, 8, 9}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4), ElementsAre(7, 8, 9)));
}

TEST(LiteralPulseSelection, ExtendsTheLaterChainWhereThePathsPart) {
  // The path forward leaps over the irregular interval behind 300, the one backward does not.
  LiteralPathSearch search =
      searchAmong({100, 200, 300, 460, 600, 740, 880, 1000, 1120}, {-1, -1, -1, -7, -7, -7, -7, -7, -7});
  EXPECT_THAT(literalLinkChainsOnce(search, {{0, 1, 2}, {6, 7, 8}}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5, 6, 7, 8)));
}

TEST(LiteralPulseSelection, InsertsARunThatTouchesNeitherChain) {
  LiteralPathSearch search = searchAmong({100, 200, 300, 460, 600, 740, 880, 1040, 1140, 1240},
                                         {-1, -1, -1, -7, -7, -7, -7, -1, -1, -1});
  EXPECT_THAT(literalLinkChainsOnce(search, {{0, 1, 2}, {7, 8, 9}}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5, 6), ElementsAre(7, 8, 9)));
}

TEST(LiteralPulseSelection, ScoresAConnectingPathWithoutItsLastCandidate) {
  const LiteralPathSearch search = searchAmong({100, 200, 300, 400, 500, 600}, {-7, -6, -4, -3, -2, -1});
  EXPECT_EQ(literalForwardScore(search, {1, 2, 3}, {3, 4, 5}), -5.0);
  EXPECT_EQ(literalForwardScore(search, {1, 2, 4}, {3, 4, 5}), -5.0);
  EXPECT_EQ(literalForwardScore(search, {1, 2, 5}, {3, 4, 5}), 0.0);
  EXPECT_EQ(literalForwardScore(search, {1}, {3, 4, 5}), 0.0);
  EXPECT_EQ(literalBackwardScore(search, {2, 3, 4}, {0, 1, 2}), -2.5);
  EXPECT_EQ(literalBackwardScore(search, {1, 3, 4}, {0, 1, 2}), -2.5);
  EXPECT_EQ(literalBackwardScore(search, {0, 3, 4}, {0, 1, 2}), 0.0);
}

TEST(LiteralPulseSelection, FillsAGapWithTheMoreStronglyMarkedPath) {
  const std::vector<int32_t> positions{100, 200, 300, 360, 400, 500};
  LiteralPathSearch search = searchAmong(positions, {-7, -7, -7, -6, -7, -7});
  // The path forward passes the head at 360 and ends on its neighbour.
  EXPECT_THAT(literalFillGaps(signalAt(1000, positions), search, {{0, 1, 2}, {3, 4, 5}}),
              ElementsAre(ElementsAre(0, 1, 2, 4, 5)));
  search.marks = {-6, -6, -6, -7, -7, -7};
  EXPECT_THAT(literalFillGaps(signalAt(1000, positions), search, {{0, 1, 2}, {3, 4, 5}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5)));
}

TEST(LiteralPulseSelection, LinksTheEndsOfAGapWithoutCandidates) {
  const std::vector<int32_t> positions{100, 200, 300, 1100, 1200, 1300};
  LiteralPathSearch search = searchAmong(positions, std::vector<int8_t>(6, -7));
  EXPECT_THAT(literalFillGaps(signalAt(2000, positions), search, {{0, 1, 2}, {3, 4, 5}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5)));
}

TEST(LiteralPulseSelection, PlansStepsThatGrowFromOneSideOfTheGapToTheOther) {
  const LiteralGapPlan plan = literalGapPlan(800, 50, 100); // 10.7 mean half-intervals
  EXPECT_EQ(plan.nrOfSteps, 11);
  EXPECT_NEAR(plan.firstStep, 800.0 / 11 - 25, 1e-9);
  EXPECT_NEAR(plan.lastStep, 800.0 / 11 + 25, 1e-9);
  EXPECT_EQ(literalGapPlan(149, 100, 100).nrOfSteps, 1);
  EXPECT_EQ(literalGapPlan(150, 100, 100).nrOfSteps, 2);
}

TEST(LiteralPulseSelection, ChoosesTheDeepestCandidateNearTheExpectedBeat) {
  const std::vector<int32_t> candidates{100, 191, 193, 200, 208, 209, 300};
  const std::vector<float> signal =
      signalWith(1000, {{100, 9}, {191, 8}, {193, 1}, {200, 2}, {208, 3}, {209, 8}, {300, 9}});
  EXPECT_EQ(literalGapChoice(signal, candidates, 200, 100, 0, 6), 4); // within 8.64 samples
}

TEST(LiteralPulseSelection, ChoosesTheDeeperNeighbourWhenNoneIsNear) {
  const std::vector<int32_t> candidates{100, 170, 230, 300};
  const auto choice = [&](float before, float after, int32_t start, int32_t end) {
    const std::vector<float> signal = signalWith(1000, {{100, 9}, {170, before}, {230, after}, {300, 9}});
    return literalGapChoice(signal, candidates, 200, 100, start, end);
  };
  EXPECT_EQ(choice(1, 2, 0, 3), 2);
  EXPECT_EQ(choice(2, 1, 0, 3), 1);
  EXPECT_EQ(choice(1, 1, 0, 3), 1);
  EXPECT_EQ(choice(2, 1, 1, 3), 2); // the deeper one is the gap's start
  EXPECT_EQ(choice(1, 2, 0, 2), 1); // the deeper one is the gap's end
  EXPECT_EQ(choice(1, 2, 1, 2), -1);
}

TEST(LiteralPulseSelection, InterpolatesTwoPulsesPerBeat) {
  std::vector<int32_t> positions{100, 300, 500, 600, 700, 800, 900, 1000, 1100, 1200, 1300, 1500, 1700};
  std::vector<int8_t> marks{-7, -7, -7, 0, 0, 0, 0, 0, 0, 0, -7, -7, -7};
  LiteralPathSearch search{positions, marks, 2000, 141, 283, 0.35};
  // Both paths connect over 700, 900 and 1100 with equal scores.
  EXPECT_THAT(literalFillGaps(signalAt(2000, positions), search, {{0, 1, 2}, {10, 11, 12}}),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12)));
}

TEST(LiteralPulseSelection, InterpolatesFromBothSidesInTurn) {
  const std::vector<int32_t> positions{100, 300, 500, 600, 800, 1000, 1200, 1300, 1500, 1700};
  const std::vector<float> signal = signalAt(2000, positions);
  // In the order 600, 1200, 800 (next to the expected 700), 1000 (next to 1091.7); then one step is left.
  EXPECT_THAT(literalInterpolatedBeats(signal, positions, {0, 1, 2}, {7, 8, 9}), ElementsAre(3, 4, 5, 6));
}

TEST(LiteralPulseSelection, PlansTheRestOfAGapWithTheUpdatedHalfIntervals) {
  // From the front 610, 110 samples on. The half-interval there is 105 then, and the next beat is expected
  // from the back at 1203.9 +- 8.3: not at 1194, deeper as it is. That one is taken last.
  const std::vector<int32_t> fromBehind{100, 300, 500, 610, 1194, 1211, 1300, 1500};
  std::vector<float> signal = signalAt(2000, fromBehind);
  signal[1194] = -2.0F;
  EXPECT_THAT(literalInterpolatedBeats(signal, fromBehind, {0, 1, 2}, {6, 7}), ElementsAre(3, 4, 5));

  // From the front 600, from the back 1240. The half-interval behind the gap is 80 then, and the next beat is
  // expected from the front at 701.4 +- 8.8: not at 691, which the chain passes.
  const std::vector<int32_t> fromBefore{100, 300, 500, 600, 691, 709, 1240, 1300, 1500};
  signal = signalAt(2000, fromBefore);
  signal[691] = -1.5F;
  signal[1240] = -2.0F;
  EXPECT_THAT(literalInterpolatedBeats(signal, fromBefore, {0, 1, 2}, {7, 8}), ElementsAre(3, 5, 6));
}

TEST(LiteralPulseSelection, FindsEveryBeatOfARegularRecording) {
  std::vector<Minimum> minima;
  std::vector<double> expected;
  for (int32_t p = 100; p <= 2900; p += 100) {
    minima.push_back({p, p == 1500 ? 0.1F : 1.0F});
    minima.push_back({p + 40, 0.3F});
    expected.push_back(p);
  }
  const std::vector<float> signal = signalWith(3000, minima);
  // The weak beat at 1500 is shallower than the false one behind it and is found by the linking.
  EXPECT_EQ(literalPulsePositions(signal, 3000, 250.0F, hundredSamples()), expected);
  expected.resize(5);
  EXPECT_EQ(literalPulsePositions(signal, 3000, 250.0F, hundredSamples(), 5), expected);
  EXPECT_THAT(literalPulsePositions(signal, 3000, 250.0F, LiteralPeriod{}), IsEmpty());
}

TEST(LiteralPulseSelection, FindsTheBeatsOfASimulatedChannel) {
  const BeatingChannel channel(3000, 6);
  const std::vector<float> signal = literalDetectionSignal({channel.samples}, 3000, fiftySamples());
  const std::vector<double> pulses = literalPulsePositions(signal, 3000, 250.0F, fiftySamples());
  ASSERT_GT(pulses.size(), 50U);
  std::vector<double> distances;
  for (const double pulse : pulses) {
    const auto after = std::upper_bound(channel.beats.begin(), channel.beats.end(), pulse + 25);
    ASSERT_NE(after, channel.beats.begin());
    distances.push_back(pulse - *(after - 1));
  }
  std::sort(distances.begin(), distances.end());
  EXPECT_LE(distances.back() - distances.front(), 2);
}

} // namespace
} // namespace emeg
