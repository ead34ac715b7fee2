#include "artifacts/cardiac/search/PulsePaths.h"

#include "tests/artifacts/cardiac/RandomCandidates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace emeg {
namespace {

/// From every candidate, with intervals of many lengths. Returns how often the search moved on.
int expectSameSteps(const CandidateSet& set, std::mt19937& random) {
  int moves = 0;
  for (const double tolerance : {0.25, 0.30, 0.35}) {
    PulsePathSearch search = set.search(tolerance);
    LiteralPathSearch literal = set.literalSearch(tolerance);
    for (int32_t c = 0; c < set.count(); ++c) {
      const double q = static_cast<double>(random() % static_cast<uint32_t>(2 * set.longest + 2));
      for (const int depth : {0, 1, 2, 3}) {
        const int32_t forward = search.followPathForward(c, q, depth);
        EXPECT_EQ(forward, literal.forward(c, q, depth)) << "from " << c << ", interval " << q;
        EXPECT_EQ(search.followPathBackward(c, q, depth), literal.backward(c, q, depth))
            << "from " << c << ", interval " << q;
        moves += forward != c ? 1 : 0;
      }
    }
  }
  return moves;
}

TEST(PulsePaths, StepAsThePlainVersionAmongScatteredCandidates) {
  int moves = 0;
  for (uint32_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = scatteredCandidates(random);
    moves += expectSameSteps(set, random);
  }
  EXPECT_GT(moves, 1000);
}

TEST(PulsePaths, StepAsThePlainVersionAmongBeats) {
  for (uint32_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = beatingCandidates(random);
    expectSameSteps(set, random);
  }
}

int32_t forward(const CandidateSet& set, int32_t c, double q, int depth = 3) {
  PulsePathSearch search = set.search();
  return search.followPathForward(c, q, depth);
}

int32_t backward(const CandidateSet& set, int32_t c, double q, int depth = 3) {
  PulsePathSearch search = set.search();
  return search.followPathBackward(c, q, depth);
}

TEST(PulsePaths, LookThreeBeatsAheadForTheLowestAverageMark) {
  // 1090 is marked more strongly, but what follows 1110 is.
  const CandidateSet set =
      candidateSet({1000, 1090, 1110, 1180, 1230, 1270, 1350}, {-7, -5, -4, 0, -7, 0, -7});
  EXPECT_EQ(forward(set, 0, 100, 1), 1);
  EXPECT_EQ(forward(set, 0, 100, 3), 2);
}

TEST(PulsePaths, ScoreThreeCandidatesAtDepthThree) {
  // The fourth beat would turn the balance.
  const CandidateSet set = candidateSet({1000, 1095, 1105, 1190, 1210, 1285, 1315, 1375, 1425},
                                        {-7, -3, -2, -3, -3, -3, -3, 0, -7});
  EXPECT_EQ(forward(set, 0, 100, 3), 1);
}

TEST(PulsePaths, StayWhereTheyAreAtDepthZero) {
  const CandidateSet set = candidateSet({900, 1000, 1100}, {-7, -7, -7});
  EXPECT_EQ(forward(set, 1, 100, 0), 1);
  EXPECT_EQ(backward(set, 1, 100, 0), 1);
}

TEST(PulsePaths, TakeTheFirstOfEqualCandidatesInWalkingOrder) {
  const CandidateSet set = candidateSet({890, 900, 910, 1000, 1090, 1100}, {0, -3, -3, -7, -3, -3});
  EXPECT_EQ(forward(set, 3, 100), 4);
  EXPECT_EQ(backward(set, 3, 100), 2);
}

TEST(PulsePaths, CountUnmarkedCandidatesAsZeroInTheAverage) {
  // By way of 1090: (-6 + 0) / 2; by way of 1100: -4.
  const CandidateSet set = candidateSet({1000, 1090, 1100, 1190, 1200}, {-7, -6, -4, 0, -4});
  EXPECT_EQ(forward(set, 0, 100, 1), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1090, 1110, 1180, 1215}, {-7, -6, -4, 0, -4}), 0, 100, 2), 2);
}

TEST(PulsePaths, AcceptTheShortestAndTheLongestIntervalThemselves) {
  EXPECT_EQ(forward(candidateSet({1000, 1071}, {0, 0}), 0, 80, 1), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1070, 1300}, {0, -7, 0}), 0, 80, 1), 1); // the last one before
  EXPECT_EQ(forward(candidateSet({1000, 1070}, {0, -7}), 0, 80, 1), 0);
  EXPECT_EQ(forward(candidateSet({1000, 1141}, {0, 0}), 0, 130, 1), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1142}, {0, 0}), 0, 130, 1), 0);
  EXPECT_EQ(backward(candidateSet({929, 1000}, {0, 0}), 1, 80, 1), 0);
  EXPECT_EQ(backward(candidateSet({930, 1000}, {0, 0}), 1, 80, 1), 1);
  EXPECT_EQ(backward(candidateSet({859, 1000}, {0, 0}), 1, 130, 1), 0);
  EXPECT_EQ(backward(candidateSet({858, 1000}, {0, 0}), 1, 130, 1), 1);
}

TEST(PulsePaths, AcceptIntervalsWithinTheToleranceOfThePreviousOne) {
  // 2^(1/4) is 1.1892.
  EXPECT_EQ(forward(candidateSet({1000, 1118}, {0, 0}), 0, 100, 1), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1119}, {0, 0}), 0, 100, 1), 0);
  EXPECT_EQ(forward(candidateSet({1000, 1085}, {0, 0}), 0, 100, 1), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1084}, {0, 0}), 0, 100, 1), 0);
  const CandidateSet wider = candidateSet({1000, 1119}, {0, 0});
  PulsePathSearch search = wider.search(0.30);
  EXPECT_EQ(search.followPathForward(0, 100, 1), 1);
}

TEST(PulsePaths, LeaveAnEmptyWindowForALowerMarkOnly) {
  EXPECT_EQ(forward(candidateSet({1000, 1150}, {-3, -5}), 0, 100), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1150}, {-3, -3}), 0, 100), 0);
  EXPECT_EQ(forward(candidateSet({1000, 1050, 1150}, {-7, 0, 0}), 0, 100), 1);
  EXPECT_EQ(forward(candidateSet({1000, 1050, 1150}, {-7, 0, -1}), 0, 100), 2);
  EXPECT_EQ(backward(candidateSet({850, 1000}, {-5, -3}), 1, 100), 0);
  EXPECT_EQ(backward(candidateSet({850, 950, 1000}, {0, 0, -7}), 2, 100), 1);
}

TEST(PulsePaths, EndWhereTheWindowStartsBehindTheLastCandidate) {
  EXPECT_EQ(forward(candidateSet({1000, 1050}, {0, -7}), 0, 100), 0);
  EXPECT_EQ(backward(candidateSet({950, 1000}, {-7, 0}), 1, 100), 1);
  EXPECT_EQ(forward(candidateSet({1000}, {-7}), 0, 100), 0);
  EXPECT_EQ(backward(candidateSet({1000}, {-7}), 0, 100), 0);
}

TEST(PulsePaths, AreClippedAtTheEndOfTheSignal) {
  // A candidate behind the end, which no signal has, is not in the window.
  CandidateSet set = candidateSet({1000, 1100}, {0, 0});
  set.length = 1101;
  EXPECT_EQ(forward(set, 0, 100), 1);
  set.length = 1100;
  EXPECT_EQ(forward(set, 0, 100), 0);
}

TEST(PulsePaths, WalkBackwardAsTheyWalkForwardInTheMirror) {
  for (uint32_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const CandidateSet set = scatteredCandidates(random);
    CandidateSet mirror = set;
    std::reverse(mirror.candidates.marks.begin(), mirror.candidates.marks.end());
    std::reverse(mirror.candidates.positions.begin(), mirror.candidates.positions.end());
    for (int32_t& p : mirror.candidates.positions) p = set.length - 1 - p;
    const int32_t last = set.count() - 1;
    for (int32_t c = 0; c <= last; ++c)
      for (const double q : {30.0, 60.0, 100.0})
        ASSERT_EQ(backward(mirror, last - c, q), last - forward(set, c, q));
  }
}

} // namespace
} // namespace emeg
