#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

} // namespace
} // namespace emeg
