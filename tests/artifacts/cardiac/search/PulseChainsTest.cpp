#include "artifacts/cardiac/search/PulseChains.h"

#include "tests/artifacts/cardiac/RandomCandidates.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Candidates at the running sums of intervals, all of them seeds.
PulseChains seedChainsOf(const std::vector<int32_t>& intervals, int32_t longest = 141) {
  std::vector<int32_t> positions{100};
  for (const int32_t interval : intervals) positions.push_back(positions.back() + interval);
  std::vector<int32_t> seeds(positions.size());
  std::iota(seeds.begin(), seeds.end(), 0);
  const CandidateSet set = candidateSet(positions, std::vector<int8_t>(positions.size(), -7));
  return makeSeedChains(set.candidates, seeds, longest);
}

PulseChains linked(const CandidateSet& set, PulseChains chains) {
  PulsePathSearch search = set.search();
  linkChains(chains, set.candidates, search);
  return chains;
}

TEST(SeedChains, AreThoseOfThePlainVersion) {
  size_t nrOfChains = 0;
  for (uint32_t seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 2 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    std::vector<int32_t> seeds;
    for (int32_t i = 0; i < set.count(); ++i)
      if (set.candidates.mark(i) == -7 || random() % 16U == 0) seeds.push_back(i);
    const PulseChains chains = makeSeedChains(set.candidates, seeds, set.longest);
    EXPECT_EQ(chains, literalSeedChains(set.candidates.positions, seeds, set.longest));
    nrOfChains += chains.size();
  }
  EXPECT_GT(nrOfChains, 300U);
}

TEST(SeedChains, JoinSeedsWhoseIntervalsAreAlike) {
  EXPECT_THAT(seedChainsOf({100, 110, 100}), ElementsAre(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(seedChainsOf({100, 118, 100}), ElementsAre(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(seedChainsOf({100, 119, 100}), IsEmpty()); // 2^(1/4) is 1.1892
}

TEST(SeedChains, NeedTwoIntervals) {
  EXPECT_THAT(seedChainsOf({}), IsEmpty());
  EXPECT_THAT(seedChainsOf({100}), IsEmpty());
  EXPECT_THAT(seedChainsOf({100, 100}), ElementsAre(ElementsAre(0, 1, 2)));
  EXPECT_THAT(makeSeedChains({}, {}, 141), IsEmpty());
}

TEST(SeedChains, BreakBesideAnInconsistentInterval) {
  EXPECT_THAT(seedChainsOf({100, 100, 100, 130, 100, 100, 100}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(5, 6, 7)));
}

TEST(SeedChains, HoldIntervalsBelowTheLongestOnly) {
  EXPECT_THAT(seedChainsOf({140, 140, 140}), ElementsAre(ElementsAre(0, 1, 2, 3)));
  EXPECT_THAT(seedChainsOf({141, 141, 141}), IsEmpty());
  // An interval beside one that is too long is not consistent either.
  EXPECT_THAT(seedChainsOf({140, 140, 140, 141}), ElementsAre(ElementsAre(0, 1, 2)));
  EXPECT_THAT(seedChainsOf({141, 140, 140, 140}), ElementsAre(ElementsAre(2, 3, 4)));
}

TEST(SeedChains, AreNoMoreThanTenThousand) {
  std::vector<int32_t> intervals;
  for (int k = 0; k < 10005; ++k) intervals.insert(intervals.end(), {100, 100, 100, 100, 200});
  EXPECT_THAT(seedChainsOf(intervals), SizeIs(10000));
  EXPECT_EQ(maxNrOfChains, 10000U);
}

TEST(GapPaths, AreThoseOfThePlainVersion) {
  size_t nrOfCandidates = 0;
  for (uint32_t seed = 0; seed < 600; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 2 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    const PulseChains chains = randomChains(set, random);
    for (const double tolerance : linkingTolerances) {
      PulsePathSearch search = set.search(tolerance);
      LiteralPathSearch literal = set.literalSearch(tolerance);
      for (size_t k = 1; k < chains.size(); ++k) {
        const GapPaths paths = findGapPaths(set.candidates, search, chains[k - 1], chains[k]);
        EXPECT_EQ(paths.forward, literalForwardPath(literal, chains[k - 1], chains[k]));
        EXPECT_EQ(paths.backward, literalBackwardPath(literal, chains[k - 1], chains[k]));
        nrOfCandidates += paths.forward.size();
      }
    }
  }
  EXPECT_GT(nrOfCandidates, 5000U);
}

TEST(GapPaths, EndWhereTheyReachOrPassTheOtherChain) {
  const CandidateSet set = candidateSet({100, 200, 300, 400, 460, 500, 600}, {-7, -7, -7, -7, -1, -7, -7});
  PulsePathSearch search = set.search();
  // The head is not on the way of the regular beats.
  const GapPaths passed = findGapPaths(set.candidates, search, {0, 1, 2}, {4, 5, 6});
  EXPECT_THAT(passed.forward, ElementsAre(2, 3, 5));
  const GapPaths reached = findGapPaths(set.candidates, search, {0, 1}, {5, 6});
  EXPECT_THAT(reached.forward, ElementsAre(1, 2, 3, 5));
  EXPECT_THAT(reached.backward, ElementsAre(1, 2, 3, 5));
}

TEST(GapPaths, EndWhereTheSearchFindsNoWayOn) {
  const CandidateSet set = candidateSet({100, 200, 300, 400, 900, 1000}, {-7, -7, -7, -7, -7, -7});
  PulsePathSearch search = set.search();
  const GapPaths paths = findGapPaths(set.candidates, search, {0, 1}, {4, 5});
  EXPECT_THAT(paths.forward, ElementsAre(1, 2, 3));
  EXPECT_THAT(paths.backward, ElementsAre(4));
}

/// How often each kind of link was met, judged from the outcome: a recording with several kinds counts once.
struct LinkingCounts {
  int merged = 0;
  int extendedAtTheTail = 0;
  int extendedAtTheHead = 0;
  int inserted = 0;

  void count(const PulseChains& before, const PulseChains& after) {
    const auto startsWith = [](const PulseChains& chains, int32_t head) {
      return std::any_of(chains.begin(), chains.end(),
                         [&](const PulseChain& c) { return c.front() == head; });
    };
    const auto endsWith = [](const PulseChains& chains, int32_t tail) {
      return std::any_of(chains.begin(), chains.end(), [&](const PulseChain& c) { return c.back() == tail; });
    };
    if (after.size() < before.size()) ++merged;
    if (after.size() > before.size()) ++inserted;
    if (after.size() != before.size()) return;
    for (const PulseChain& chain : after) {
      if (!startsWith(before, chain.front())) ++extendedAtTheHead;
      if (!endsWith(before, chain.back())) ++extendedAtTheTail;
    }
  }
};

TEST(LinkedChains, AreThoseOfThePlainVersion) {
  LinkingCounts counts;
  for (uint32_t seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = seed % 4 == 0 ? scatteredCandidates(random) : beatingCandidates(random);
    const PulseChains chains = randomChains(set, random);
    LiteralPathSearch literal = set.literalSearch();
    const PulseChains result = linked(set, chains);
    EXPECT_EQ(result, literalLinkChains(literal, chains));
    counts.count(chains, result);
  }
  // Every outcome was met.
  EXPECT_GT(counts.merged, 20);
  EXPECT_GT(counts.extendedAtTheTail, 20);
  EXPECT_GT(counts.extendedAtTheHead, 20);
  EXPECT_GT(counts.inserted, 5);
}

TEST(LinkedChains, MergeThroughARegularGap) {
  const CandidateSet set =
      candidateSet({100, 200, 300, 400, 500, 600, 700, 800, 900}, {-7, -7, -7, -6, -6, -6, -7, -7, -7});
  EXPECT_THAT(linked(set, {{0, 1, 2}, {6, 7, 8}}), ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8)));
}

TEST(LinkedChains, AreExaminedAgainWithTheNextOneAfterAMerge) {
  std::vector<int32_t> positions;
  for (int32_t i = 1; i <= 15; ++i) positions.push_back(100 * i);
  const CandidateSet set = candidateSet(positions, std::vector<int8_t>(15, -6));
  EXPECT_THAT(linked(set, {{0, 1, 2}, {6, 7, 8}, {12, 13, 14}}), ElementsAre(SizeIs(15)));
  // In the first round already.
  LiteralPathSearch once = set.literalSearch();
  EXPECT_THAT(literalLinkChainsOnce(once, {{0, 1, 2}, {6, 7, 8}, {12, 13, 14}}), ElementsAre(SizeIs(15)));
}

TEST(LinkedChains, StayAloneThatShareFewerThanThreeBeats) {
  const CandidateSet set = candidateSet({100, 200, 300, 400, 500, 600}, std::vector<int8_t>(6, -7));
  EXPECT_THAT(linked(set, {{0, 1, 2}, {3, 4, 5}}), ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5)));
  EXPECT_THAT(linked(set, {{0, 1}, {3, 4}}), ElementsAre(ElementsAre(0, 1, 2, 3, 4)));
}

TEST(LinkedChains, ExtendTheEarlierOneWhereThePathsPart) {
  const CandidateSet set = candidateSet({100, 200, 300, 400, 500, 590, 600, 700, 800, 900},
                                        {-7, -7, -7, -7, -7, -5, -2, -1, -1, -1});
  LiteralPathSearch literal = set.literalSearch();
  const PulseChains chains{{0, 1, 2}, {7, 8, 9}};
  EXPECT_THAT(literalLinkChainsOnce(literal, chains),
              ElementsAre(ElementsAre(0, 1, 2, 3, 4), ElementsAre(7, 8, 9)));
  EXPECT_EQ(linked(set, chains), literalLinkChains(literal, chains));
}

TEST(LinkedChains, ExtendTheLaterOneWhereThePathsPart) {
  const CandidateSet set =
      candidateSet({100, 200, 300, 460, 600, 740, 880, 1000, 1120}, {-1, -1, -1, -7, -7, -7, -7, -7, -7});
  EXPECT_THAT(linked(set, {{0, 1, 2}, {6, 7, 8}}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5, 6, 7, 8)));
}

TEST(LinkedChains, GetANewOneBetweenThemWhereTheRunTouchesNeither) {
  const CandidateSet set = candidateSet({100, 200, 300, 460, 600, 740, 880, 1040, 1140, 1240},
                                        {-1, -1, -1, -7, -7, -7, -7, -1, -1, -1});
  EXPECT_THAT(linked(set, {{0, 1, 2}, {7, 8, 9}}),
              ElementsAre(ElementsAre(0, 1, 2), ElementsAre(3, 4, 5, 6), ElementsAre(7, 8, 9)));
}

TEST(LinkedChains, GetNoNewOneWhereThereAreTenThousand) {
  // The example above, at the start; as many chains behind it as there is room for. The others are so far
  // apart that no path leads from one to the next.
  std::vector<int32_t> positions{100, 200, 300, 460, 600, 740, 880, 1040, 1140, 1240};
  std::vector<int8_t> marks{-1, -1, -1, -7, -7, -7, -7, -1, -1, -1};
  PulseChains chains{{0, 1, 2}, {7, 8, 9}};
  while (chains.size() < maxNrOfChains) {
    const auto first = static_cast<int32_t>(positions.size());
    positions.push_back(positions.back() + 1000);
    positions.push_back(positions.back() + 100);
    marks.insert(marks.end(), {-1, -1});
    chains.push_back({first, first + 1});
  }
  EXPECT_EQ(linked(candidateSet(positions, marks), chains), chains);
  chains.pop_back();
  const PulseChains withRoom = linked(candidateSet(positions, marks), chains);
  EXPECT_THAT(withRoom, SizeIs(maxNrOfChains));
  EXPECT_THAT(withRoom[1], ElementsAre(3, 4, 5, 6));
}

TEST(LinkedChains, TolerateMoreInTheSecondAndThirdRound) {
  // Intervals that change by 2^0.28 and 2^0.33 from one side to the other.
  for (const int32_t shorter : {82, 80}) {
    std::vector<int32_t> positions{100, 200, 300};
    for (int k = 0; k < 5; ++k) positions.push_back(positions.back() + (k < 2 ? 100 : shorter));
    const CandidateSet set = candidateSet(positions, std::vector<int8_t>(positions.size(), -7));
    LiteralPathSearch literal = set.literalSearch();
    const PulseChains chains{{0, 1, 2}, {6, 7}};
    EXPECT_EQ(linked(set, chains), literalLinkChains(literal, chains));
    EXPECT_THAT(linked(set, chains), SizeIs(1));
    EXPECT_THAT(literalLinkChainsOnce(literal = set.literalSearch(0.25), chains), SizeIs(2)) << shorter;
  }
}

TEST(LinkedChains, AreNoneWithoutSeeds) {
  const CandidateSet set = candidateSet({100, 200}, {-7, -7});
  EXPECT_THAT(linked(set, {}), IsEmpty());
  EXPECT_THAT(linked(set, {{0, 1}}), ElementsAre(ElementsAre(0, 1)));
}

} // namespace
} // namespace emeg
