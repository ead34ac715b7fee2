#include "artifacts/cardiac/search/GapFilling.h"

#include "tests/artifacts/cardiac/RandomCandidates.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double widest = 0.35;

PulseChain filled(const CandidateSet& set, const PulseChains& chains) {
  PulsePathSearch search = set.search(); // whatever was set before
  return fillGaps(chains, set.candidates, search);
}

PulseChains literallyFilled(const CandidateSet& set, const PulseChains& chains) {
  LiteralPathSearch search = set.literalSearch(widest);
  return literalFillGaps(set.signal(), search, chains);
}

/// Whether the intervals on either side of every gap differ by no more than from the shortest to the longest
/// that is accepted, as those of found chains do.
bool hasLikeIntervals(const CandidateSet& set, const PulseChains& chains) {
  const auto interval = [&](int32_t from, int32_t to) {
    return set.candidates.position(to) - set.candidates.position(from);
  };
  for (size_t k = 1; k < chains.size(); ++k) {
    const int32_t before = interval(*(chains[k - 1].end() - 2), chains[k - 1].back());
    const int32_t after = interval(chains[k][0], chains[k][1]);
    if (before > 2 * after || after > 2 * before) return false;
  }
  return true;
}

TEST(FilledGaps, AreThoseOfThePlainVersion) {
  int nrOfSets = 0;
  int nrOfForwardPaths = 0;
  int nrOfBackwardPaths = 0;
  int nrOfInterpolations = 0;
  int nrOfBypassedEnds = 0;
  for (uint32_t seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 4 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    PulseChains chains = randomChains(set, random);
    if (chains.empty() || !hasLikeIntervals(set, chains)) continue;
    ++nrOfSets;
    EXPECT_THAT(literallyFilled(set, chains), ElementsAre(filled(set, chains)));

    LiteralPathSearch search = set.literalSearch(widest);
    for (size_t k = 1; k < chains.size(); ++k) {
      const PulseChain pair = filled(set, {chains[k - 1], chains[k]});
      const auto forward = literalForwardPath(search, chains[k - 1], chains[k]);
      const auto backward = literalBackwardPath(search, chains[k - 1], chains[k]);
      const double forwardScore = literalForwardScore(search, forward, chains[k]);
      const double backwardScore = literalBackwardScore(search, backward, chains[k - 1]);
      ++(forwardScore < backwardScore   ? nrOfForwardPaths
         : backwardScore < forwardScore ? nrOfBackwardPaths
                                        : nrOfInterpolations);
      for (const int32_t end : {chains[k - 1].back(), chains[k].front()})
        if (!std::binary_search(pair.begin(), pair.end(), end)) ++nrOfBypassedEnds;
    }
  }
  EXPECT_GT(nrOfSets, 500);
  // Every way was taken.
  EXPECT_GT(nrOfForwardPaths, 100);
  EXPECT_GT(nrOfBackwardPaths, 100);
  EXPECT_GT(nrOfInterpolations, 100);
  EXPECT_GT(nrOfBypassedEnds, 20);
}

TEST(FilledGaps, AreThoseOfThePlainVersionBesideIntervalsThatAreNotAlike) {
  for (uint32_t seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 4 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    const PulseChains chains = randomChains(set, random);
    if (chains.empty()) continue;
    EXPECT_THAT(literallyFilled(set, chains), ElementsAre(filled(set, chains)));
  }
}

TEST(FilledGaps, AreThoseOfThePlainVersionAfterLinking) {
  for (uint32_t seed = 5000; seed < 5500; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = beatingCandidates(random);
    PulseChains chains = randomChains(set, random);
    PulsePathSearch search = set.search();
    linkChains(chains, set.candidates, search);
    const PulseChains expected = literallyFilled(set, chains);
    const PulseChain whole = fillGaps(chains, set.candidates, search);
    EXPECT_EQ(whole, expected.empty() ? PulseChain{} : expected.front());
    EXPECT_EQ(std::adjacent_find(whole.begin(), whole.end(), std::greater_equal<>()), whole.end());
  }
}

TEST(FilledGaps, AreNoneWithoutChainsOrWithOne) {
  const CandidateSet set = candidateSet({100, 200, 300}, {-7, -7, -7});
  EXPECT_THAT(filled(set, {}), IsEmpty());
  EXPECT_THAT(filled(set, {{0, 1, 2}}), ElementsAre(0, 1, 2));
}

TEST(FilledGaps, HoldTheMoreStronglyMarkedPathAndDropTheEndThatItBypasses) {
  CandidateSet set = candidateSet({100, 200, 300, 360, 400, 500}, {-7, -7, -7, -6, -7, -7});
  // The path forward passes the head at 360 and ends on its neighbour.
  EXPECT_THAT(filled(set, {{0, 1, 2}, {3, 4, 5}}), ElementsAre(0, 1, 2, 4, 5));
  set.candidates.marks = {-6, -6, -6, -7, -7, -7};
  EXPECT_THAT(filled(set, {{0, 1, 2}, {3, 4, 5}}), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(FilledGaps, DropABypassedEndOfTheEarlierChainToo) {
  // In the mirror: the path backward passes the tail at 340 and ends on its neighbour at 300.
  const CandidateSet set = candidateSet({200, 300, 340, 400, 500, 600}, {-7, -7, -6, -7, -7, -7});
  EXPECT_THAT(filled(set, {{0, 1, 2}, {4, 5}}), ElementsAre(0, 1, 3, 4, 5));
  EXPECT_THAT(literallyFilled(set, {{0, 1, 2}, {4, 5}}), ElementsAre(ElementsAre(0, 1, 3, 4, 5)));
}

TEST(FilledGaps, AreScoredWithoutTheLastCandidateInWalkingOrder) {
  // Both paths lead over 400 and 500. Forward the tail counts and the head does not, backward the other way
  // round: whichever end is marked more strongly decides, and only equal ends are interpolated (at half of
  // the intervals, which takes the candidates in between).
  std::vector<int32_t> positions{100, 200, 300, 350, 400, 450, 500, 550, 600, 700, 800};
  for (const int8_t tail : std::vector<int8_t>{-7, -5, -1}) {
    CandidateSet set = candidateSet(positions, {-7, -7, tail, 0, -6, 0, -6, 0, -5, -7, -7});
    const PulseChain beats = filled(set, {{0, 1, 2}, {8, 9, 10}});
    if (tail == -5) {
      EXPECT_THAT(beats, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
    } else {
      EXPECT_THAT(beats, ElementsAre(0, 1, 2, 4, 6, 8, 9, 10));
    }
    EXPECT_THAT(literallyFilled(set, {{0, 1, 2}, {8, 9, 10}}), ElementsAre(beats));
  }
}

TEST(FilledGaps, AreInterpolatedWhereUnmarkedPathsScoreNothing) {
  std::vector<int32_t> positions{100, 200, 300, 350, 400, 450, 500, 550, 600, 700, 800};
  const CandidateSet set = candidateSet(positions, std::vector<int8_t>(positions.size(), 0));
  EXPECT_THAT(filled(set, {{0, 1, 2}, {8, 9, 10}}), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST(FilledGaps, TolerateIntervalsThatChangeByAThirdOfAnOctave) {
  // 2^0.33 is 1.257: within the widest tolerance alone.
  const CandidateSet set =
      candidateSet({100, 200, 300, 400, 525, 650, 775}, {-7, -7, -7, -7, -6, -6, -6}, 60, 160);
  EXPECT_THAT(filled(set, {{0, 1, 2}, {4, 5, 6}}), ElementsAre(0, 1, 2, 3, 4, 5, 6));
}

TEST(FilledGaps, WithoutCandidatesLinkTheEnds) {
  const CandidateSet set = candidateSet({100, 200, 300, 1100, 1200, 1300}, std::vector<int8_t>(6, -7));
  EXPECT_THAT(filled(set, {{0, 1, 2}, {3, 4, 5}}), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(FilledGaps, GetTwoInterpolatedPulsesPerBeat) {
  const CandidateSet set =
      candidateSet({100, 300, 500, 600, 700, 800, 900, 1000, 1100, 1200, 1300, 1500, 1700},
                   {-7, -7, -7, 0, 0, 0, 0, 0, 0, 0, -7, -7, -7}, 141, 283);
  // Both paths connect over 700, 900 and 1100 with equal scores.
  EXPECT_THAT(filled(set, {{0, 1, 2}, {10, 11, 12}}), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

/// Of a gap between two candidates; the intervals on either side reach to the first and the last candidate of
/// the set.
std::vector<int32_t> literallyInterpolated(const CandidateSet& set, int32_t start, int32_t end) {
  return literalInterpolatedBeats(set.signal(), set.candidates.positions, {0, start}, {end, set.count() - 1});
}

std::vector<int32_t> interpolated(const CandidateSet& set, int32_t start, int32_t end) {
  const PulseCandidates& all = set.candidates;
  return interpolateBeats(all, start, end, 0.5 * (all.position(start) - all.position(0)),
                          0.5 * (all.position(set.count() - 1) - all.position(end)));
}

TEST(InterpolatedBeats, AreThoseOfThePlainVersion) {
  size_t nrOfBeats = 0;
  for (uint32_t seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 2 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    if (set.count() < 8) continue;
    const int32_t start = 1 + static_cast<int32_t>(random() % 3U);
    const int32_t end = set.count() - 2 - static_cast<int32_t>(random() % 3U);
    if (start >= end) continue;
    const std::vector<int32_t> beats = interpolated(set, start, end);
    EXPECT_EQ(beats, literallyInterpolated(set, start, end));
    EXPECT_EQ(std::adjacent_find(beats.begin(), beats.end(), std::greater_equal<>()), beats.end());
    nrOfBeats += beats.size();
  }
  EXPECT_GT(nrOfBeats, 5000U);
}

TEST(InterpolatedBeats, AreThoseOfThePlainVersionWhereTheDeepestLiesBehindTheGap) {
  // Expected at 1091.5 +- 7.9, behind the gap's end at 1084; the deepest there is 1086.
  CandidateSet set = candidateSet({800, 1000, 1040, 1084, 1086}, std::vector<int8_t>(5, 0));
  set.candidates.values[4] = -2;
  EXPECT_EQ(interpolated(set, 1, 3), literallyInterpolated(set, 1, 3));
}

TEST(InterpolatedBeats, ComeFromBothSidesInTurn) {
  const CandidateSet set =
      candidateSet({100, 300, 500, 600, 800, 1000, 1200, 1300, 1500, 1700}, std::vector<int8_t>(10, 0));
  // In the order 600, 1200, 800 (next to the expected 700), 1000 (next to 1091.7); then one step is left.
  EXPECT_THAT(interpolateBeats(set.candidates, 2, 7, 100, 100), ElementsAre(3, 4, 5, 6));
}

TEST(InterpolatedBeats, ArePlannedAnewWithTheUpdatedHalfInterval) {
  // From the front 610, 110 samples on. The half-interval there is 105 then, and the next beat is expected
  // from the back at 1203.9 +- 8.3: not at 1194, deeper as it is. That one is taken last.
  CandidateSet set = candidateSet({300, 500, 610, 1194, 1211, 1300, 1500}, std::vector<int8_t>(7, 0));
  set.candidates.values[3] = -2;
  EXPECT_THAT(interpolateBeats(set.candidates, 1, 5, 100, 100), ElementsAre(2, 3, 4));
}

TEST(InterpolatedBeats, AreNoneWhereFewerThanTwoStepsFit) {
  const CandidateSet set = candidateSet({100, 200, 275, 349, 400}, std::vector<int8_t>(5, 0));
  EXPECT_THAT(interpolateBeats(set.candidates, 1, 3, 100, 100), IsEmpty()); // 149 samples
  const CandidateSet longer = candidateSet({100, 200, 275, 350, 400}, std::vector<int8_t>(5, 0));
  EXPECT_THAT(interpolateBeats(longer.candidates, 1, 3, 100, 100), ElementsAre(2));
}

/// One gap of two steps: the beat is expected in the middle, 200 +- 8.64 samples.
std::vector<int32_t> inTheMiddle(const std::vector<int32_t>& inside, const std::vector<float>& depths) {
  std::vector<int32_t> positions{100};
  positions.insert(positions.end(), inside.begin(), inside.end());
  positions.push_back(300);
  CandidateSet set = candidateSet(positions, std::vector<int8_t>(positions.size(), 0));
  for (size_t k = 0; k < depths.size(); ++k) set.candidates.values[k + 1] = -depths[k];
  // Half-intervals of 110: two steps at first, and one each in what is left.
  return interpolateBeats(set.candidates, 0, set.count() - 1, 110, 110);
}

TEST(InterpolatedBeats, AreTheDeepestWithinTheWindow) {
  EXPECT_THAT(inTheMiddle({191, 193, 200, 208, 209}, {8, 1, 2, 3, 8}), ElementsAre(4));
  EXPECT_THAT(inTheMiddle({193, 200, 208}, {2, 2, 2}), ElementsAre(1)); // the first of equals
}

TEST(InterpolatedBeats, AreTheDeeperNeighbourWhereTheWindowIsEmptyAndTheEarlierOneOnTies) {
  EXPECT_THAT(inTheMiddle({170, 230}, {1, 2}), ElementsAre(2));
  EXPECT_THAT(inTheMiddle({170, 230}, {2, 1}), ElementsAre(1));
  EXPECT_THAT(inTheMiddle({170, 230}, {1, 1}), ElementsAre(1));
}

TEST(InterpolatedBeats, AreTheOtherNeighbourWhereTheDeeperOneIsAnEndOfTheGap) {
  EXPECT_THAT(inTheMiddle({230}, {0.5F}), ElementsAre(1)); // the start is deeper
  EXPECT_THAT(inTheMiddle({170}, {0.5F}), ElementsAre(1)); // the end is deeper
  EXPECT_THAT(inTheMiddle({}, {}), IsEmpty());
}

TEST(InterpolatedBeats, IgnoreValuesFrom1e30On) {
  EXPECT_THAT(inTheMiddle({170, 200, 230}, {1, -2e30F, 2}), ElementsAre(1));
}

} // namespace
} // namespace emeg
