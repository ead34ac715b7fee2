#include "artifacts/cardiac/search/PulseCandidates.h"

#include "artifacts/cardiac/search/DetectionSignal.h"
#include "tests/artifacts/cardiac/TestRecordings.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace emeg {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr size_t unlimited = 1000000;
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// Zero but for minima of one sample each; the value of each is minus its depth.
struct Minimum {
  int32_t position;
  float depth;
};

std::vector<float> signalWith(int32_t length, const std::vector<Minimum>& minima) {
  std::vector<float> signal(static_cast<size_t>(length), 0.0F);
  for (const Minimum& m : minima) signal[static_cast<size_t>(m.position)] = -m.depth;
  return signal;
}

struct Marked {
  PulseCandidates candidates;
  std::vector<int32_t> seeds;
};

Marked markedIn(const std::vector<float>& signal, int32_t shortest) {
  Marked marked;
  marked.candidates = findCandidates(signal, unlimited);
  marked.seeds = markCandidates(marked.candidates, shortest);
  return marked;
}

void expectSameMarks(const std::vector<float>& signal, int32_t shortest) {
  const Marked marked = markedIn(signal, shortest);
  // At a rate of 35 minima a second the plain version has room for all.
  const std::vector<int32_t> positions = literalCandidates(signal, 35);
  EXPECT_EQ(marked.candidates.positions, positions);
  ASSERT_EQ(marked.candidates.values.size(), positions.size());
  for (size_t i = 0; i < positions.size(); ++i)
    EXPECT_EQ(marked.candidates.values[i], signal[static_cast<size_t>(positions[i])]);
  const LiteralMarks literal = literalMarks(signal, positions, shortest);
  EXPECT_EQ(marked.candidates.marks, literal.marks);
  std::vector<int32_t> seeds = marked.seeds; // the plain version bounds them here
  seeds.resize(std::min(seeds.size(), signal.size() / static_cast<size_t>(shortest)));
  EXPECT_EQ(seeds, literal.seeds);
}

TEST(PulseCandidates, AreThoseOfThePlainVersionInRandomSignals) {
  for (uint32_t seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const uint32_t nrOfLevels = 2 + random() % 40U; // few levels: many equal values
    std::vector<float> signal;
    for (uint32_t i = random() % 400U; i > 0; --i)
      signal.push_back(static_cast<float>(random() % nrOfLevels));
    expectSameMarks(signal, 1 + static_cast<int32_t>(random() % 60U));
  }
}

TEST(PulseCandidates, AreThoseOfThePlainVersionInDetectionSignals) {
  for (const TestRecording& recording : simulatedRecordings()) {
    SCOPED_TRACE(recording.name);
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    expectSameMarks(buildPulseDetectionSignal(recording.view(), heart), heart.shortest);
  }
}

TEST(PulseCandidates, AreThoseOfThePlainVersionAmongValuesThatAreNotNumbers) {
  for (uint32_t seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<float> signal;
    for (int i = 0; i < 300; ++i) {
      const uint32_t kind = random() % 20U;
      signal.push_back(kind == 0   ? notANumber
                       : kind == 1 ? -std::numeric_limits<float>::infinity()
                                   : static_cast<float>(random() % 50U));
    }
    const Marked marked = markedIn(signal, 20);
    EXPECT_EQ(marked.candidates.positions, literalCandidates(signal, 35));
    EXPECT_EQ(marked.candidates.marks, literalMarks(signal, marked.candidates.positions, 20).marks);
  }
}

TEST(PulseCandidates, AreNoneInAFlatSignal) {
  const Marked marked = markedIn(std::vector<float>(1000, -1.0F), 71);
  EXPECT_EQ(marked.candidates.count(), 0);
  EXPECT_THAT(marked.candidates.marks, IsEmpty());
  EXPECT_THAT(marked.seeds, IsEmpty());
}

TEST(PulseCandidates, AreNoneInFewerThanThreeSamples) {
  for (const auto& signal : {std::vector<float>{}, {1.0F}, {1.0F, 0.0F}})
    EXPECT_EQ(findCandidates(signal, unlimited).count(), 0);
  EXPECT_THAT(findCandidates({1, 0, 1}, unlimited).positions, ElementsAre(1));
}

TEST(PulseCandidates, AreStrictMinimaInsideTheSignal) {
  const std::vector<float> signal{-9, 0, -1, 0, -1, -1, 0, -2, 0, -9};
  const PulseCandidates candidates = findCandidates(signal, unlimited);
  EXPECT_THAT(candidates.positions, ElementsAre(2, 7));
  EXPECT_THAT(candidates.values, ElementsAre(-1.0F, -2.0F));
  EXPECT_THAT(candidates.marks, ElementsAre(0, 0));
}

TEST(PulseCandidates, ReachFromTheSecondSampleToTheLastButOne) {
  EXPECT_THAT(findCandidates({0, -1, 0, -1, 0}, unlimited).positions, ElementsAre(1, 3));
}

TEST(PulseCandidates, AreNoMoreThanThereIsRoomFor) {
  std::vector<float> zigzag;
  for (int i = 0; i < 100; ++i) zigzag.push_back(i % 2 == 0 ? 0.0F : -1.0F);
  for (const size_t capacity : std::vector<size_t>{0, 1, 14, 49, 50}) {
    const PulseCandidates candidates = findCandidates(zigzag, capacity);
    ASSERT_EQ(candidates.positions.size(), std::min<size_t>(capacity, 49));
    EXPECT_EQ(candidates.values.size(), candidates.positions.size());
    EXPECT_EQ(candidates.marks.size(), candidates.positions.size());
    for (int32_t i = 0; i < candidates.count(); ++i) EXPECT_EQ(candidates.position(i), 2 * i + 1);
  }
  EXPECT_EQ(literalCandidates(zigzag, 250), findCandidates(zigzag, 14).positions);
}

TEST(PulseMarks, GoToTheDeeperOfTwoNeighboursFirstAndToTheOtherInALaterPass) {
  const Marked marked = markedIn(signalWith(1000, {{100, 1}, {150, 2}, {700, 1}}), 71);
  EXPECT_THAT(marked.candidates.marks, ElementsAre(-6, -7, -7));
  EXPECT_THAT(marked.seeds, ElementsAre(1, 2));
}

TEST(PulseMarks, NeverGoToTwoEqualNeighbours) {
  const Marked marked = markedIn(signalWith(1000, {{400, 1}, {430, 1}, {700, 1}}), 71);
  EXPECT_THAT(marked.candidates.marks, ElementsAre(0, 0, -7));
  EXPECT_THAT(marked.seeds, ElementsAre(2));
}

TEST(PulseMarks, DependOnWhatLiesWithinTheShortestIntervalItselfIncluded) {
  EXPECT_THAT(markedIn(signalWith(1000, {{100, 1}, {171, 2}}), 71).candidates.marks, ElementsAre(-6, -7));
  EXPECT_THAT(markedIn(signalWith(1000, {{100, 1}, {172, 2}}), 71).candidates.marks, ElementsAre(-7, -7));
  EXPECT_THAT(markedIn(signalWith(1000, {{100, 2}, {171, 1}}), 71).candidates.marks, ElementsAre(-7, -6));
  EXPECT_THAT(markedIn(signalWith(1000, {{100, 2}, {172, 1}}), 71).candidates.marks, ElementsAre(-7, -7));
}

TEST(PulseMarks, AreBlockedByAMarkOfTheSamePassToo) {
  // 100 is marked before 160 is looked at, whose only deeper neighbour it is.
  const Marked marked = markedIn(signalWith(1000, {{100, 2}, {160, 1}}), 71);
  EXPECT_THAT(marked.candidates.marks, ElementsAre(-7, -6));
}

TEST(PulseMarks, EndAfterSevenPasses) {
  std::vector<Minimum> minima;
  for (int32_t i = 0; i < 9; ++i) minima.push_back({100 + 5 * i, 1.0F + 0.1F * static_cast<float>(i)});
  const Marked marked = markedIn(signalWith(1000, minima), 71);
  EXPECT_THAT(marked.candidates.marks, ElementsAre(0, 0, -1, -2, -3, -4, -5, -6, -7));
  EXPECT_THAT(marked.seeds, ElementsAre(8));
}

} // namespace
} // namespace emeg
