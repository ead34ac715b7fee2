#include "artifacts/cardiac/search/BeatTemplate.h"

#include "artifacts/cardiac/search/BeatTracking.h"
#include "artifacts/cardiac/search/BeatWeights.h"
#include "tests/artifacts/cardiac/TestRecordings.h"
#include "tests/artifacts/reference/LiteralDetectionSignal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace emeg {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// The selection and the template; returns how many beats were selected.
int64_t expectSameTemplate(const std::vector<double>& channel, int32_t length,
                           const std::vector<int32_t>& beats, int32_t period) {
  const std::vector<double> weights = beatWeights(period);
  const LiteralBeatTemplate literal = literalBeatTemplate(channel, length, beats, period);
  const std::vector<bool> selected = selectBeats(channel.data(), length, beats, period, weights);
  EXPECT_EQ(selected, literal.selected);
  EXPECT_TRUE(sameValues(makeBeatTemplate(channel.data(), length, beats, period, weights), literal.samples));
  return std::count(selected.begin(), selected.end(), true);
}

void expectSameTemplates(const std::vector<TestRecording>& recordings) {
  for (const TestRecording& recording : recordings) {
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    const std::vector<int32_t> beats = trackBeats(recording.view(), heart);
    for (size_t c = 0; c < recording.channels.size(); ++c) {
      SCOPED_TRACE(recording.name + ", channel " + std::to_string(c));
      expectSameTemplate(recording.channels[c], recording.length, beats, heart.period);
    }
  }
}

TEST(BeatTemplate, IsThatOfThePlainVersionInSimulatedRecordings) {
  expectSameTemplates(simulatedRecordings());
}

TEST(BeatTemplate, IsThatOfThePlainVersionInNoise) {
  expectSameTemplates(noiseRecordings(5000, 150));
}

TEST(BeatTemplate, IsThatOfThePlainVersionWhereResemblancesAreEqualButForRounding) {
  expectSameTemplates(tiedRecordings());
}

TEST(BeatTemplate, IsThatOfThePlainVersionInDeadAndHalfDeadChannels) {
  expectSameTemplates(impairedRecordings());
}

TEST(BeatTemplate, IsThatOfThePlainVersionInShortRecordings) {
  expectSameTemplates(shortRecordings());
}

TEST(BeatTemplate, IsThatOfThePlainVersionForHugeAndTinySamples) {
  expectSameTemplates(extremeRecordings());
}

TEST(BeatTemplate, IsThatOfThePlainVersionForBeatsAnywhere) {
  for (uint32_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    const TestRecording recording = noiseRecordings(6000 + seed, 1).front();
    std::mt19937 random(seed);
    std::vector<int32_t> beats;
    const auto period = static_cast<int32_t>(1 + random() % 12U);
    for (uint32_t n = 1 + random() % 40U; n > 0; --n)
      beats.push_back(static_cast<int32_t>(random() % static_cast<uint32_t>(recording.length + 60)) - 30);
    expectSameTemplate(recording.channels[0], recording.length, beats, period);
  }
}

TEST(BeatTemplate, IsThatOfThePlainVersionForTwoToFiveBeats) {
  // The resemblances of two beats are equal: rounding decides whether they lie below their median.
  for (uint32_t seed = 0; seed < 600; ++seed) {
    SCOPED_TRACE(seed);
    const TestRecording recording = noiseRecordings(7000 + seed, 1).front();
    std::vector<int32_t> beats{5};
    for (uint32_t n = 0; n <= seed % 4; ++n)
      beats.push_back(beats.back() + 4 + static_cast<int32_t>(seed % 3));
    expectSameTemplate(recording.channels[0], recording.length, beats, 6);
  }
}

TEST(BeatTemplate, IsThatOfThePlainVersionForRepetitionsOfFewShapes) {
  // Groups of beats that agree exactly, each as far from the median as the others: half and half, a third,
  // ...
  for (uint32_t seed = 0; seed < 200; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const uint32_t nrOfShapes = 2 + seed % 3;
    const int32_t period = 8;
    const int32_t size = 2 * period + 1;
    std::vector<std::vector<double>> shapes(nrOfShapes);
    for (std::vector<double>& shape : shapes)
      for (int32_t i = 0; i < size; ++i) shape.push_back(static_cast<double>(random() % 9U) - 4);
    std::vector<double> channel;
    std::vector<int32_t> beats;
    const auto nrOfBeats = static_cast<int32_t>(2 + random() % 30U);
    for (int32_t k = 0; k < nrOfBeats; ++k) {
      const std::vector<double>& shape = shapes[static_cast<uint32_t>(k) % nrOfShapes];
      channel.insert(channel.end(), shape.begin(), shape.end());
      beats.push_back(k * size + period);
    }
    expectSameTemplate(channel, static_cast<int32_t>(channel.size()), beats, period);
  }
}

TEST(BeatTemplate, IsThatOfThePlainVersionForMoreBeatsThanAMoment) {
  const TestRecording recording = noiseRecordings(8000, 1).front();
  std::vector<int32_t> beats;
  std::mt19937 random(1);
  for (int k = 0; k < 1500; ++k)
    beats.push_back(static_cast<int32_t>(random() % static_cast<uint32_t>(recording.length)));
  const int64_t nrOfSelected = expectSameTemplate(recording.channels[0], recording.length, beats, 5);
  EXPECT_GT(nrOfSelected, 500);
  EXPECT_LT(nrOfSelected, 1000);
}

TEST(BeatTemplate, IsThatOfThePlainVersionForBeatsThatHaveNothingInCommon) {
  // An even and an odd shape: their products cancel but for rounding.
  for (uint32_t seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::normal_distribution<double> gaussian;
    const int32_t period = 10;
    std::vector<double> channel(42, 0.0);
    for (int32_t j = 0; j <= period; ++j) {
      const double even = gaussian(random);
      const double odd = j == 0 ? 0.0 : gaussian(random);
      channel[static_cast<size_t>(10 + j)] = channel[static_cast<size_t>(10 - j)] = even;
      channel[static_cast<size_t>(31 + j)] = odd;
      channel[static_cast<size_t>(31 - j)] = -odd;
    }
    expectSameTemplate(channel, 42, {10, 31}, period);
  }
}

TEST(BeatTemplate, AddsTheBeatsThatResembleEachOther) {
  std::vector<double> channel(40, 0.0);
  channel[10] = 2;
  channel[20] = 4;
  channel[30] = -8;
  const std::vector<int32_t> beats{10, 20, 30};
  const std::vector<double> weights = beatWeights(1);
  EXPECT_THAT(selectBeats(channel.data(), 40, beats, 1, weights), ElementsAre(true, true, false));
  EXPECT_THAT(makeBeatTemplate(channel.data(), 40, beats, 1, weights), ElementsAre(0, 2, 0));
  expectSameTemplate(channel, 40, beats, 1);
}

TEST(BeatTemplate, LeavesOutABeatOfAnotherShapeAmongMany) {
  const std::vector<double> channel = beatingChannel(1500, 1);
  std::vector<int32_t> beats = trackBeats(makeRecording("", {channel}, 50).view(), heartOfPeriod(50));
  beats.insert(beats.begin() + 5, (beats[4] + beats[5]) / 2);
  const std::vector<bool> selected = selectBeats(channel.data(), 1500, beats, 50, beatWeights(50));
  EXPECT_FALSE(selected[5]);
  EXPECT_GT(expectSameTemplate(channel, 1500, beats, 50), 5);
}

TEST(BeatTemplate, OfASingleBeatIsEmpty) {
  const std::vector<double> channel = beatingChannel(300, 1);
  const std::vector<double> weights = beatWeights(50);
  EXPECT_THAT(selectBeats(channel.data(), 300, {150}, 50, weights), ElementsAre(false));
  const std::vector<double> beatTemplate = makeBeatTemplate(channel.data(), 300, {150}, 50, weights);
  EXPECT_EQ(beatTemplate.size(), 101U);
  EXPECT_THAT(beatTemplate, Each(0.0));
  expectSameTemplate(channel, 300, {150}, 50);
}

TEST(BeatTemplate, CountsWhatLiesOutsideTheSeriesAsZero) {
  std::vector<double> channel = beatingChannel(200, 1);
  for (const std::vector<int32_t>& beats :
       {std::vector<int32_t>{10, 60, 110, 160, 195}, {-20, 30, 80, 130, 250}, {-500, 900, 100, 120}}) {
    expectSameTemplate(channel, 200, beats, 50);
    std::vector<double> surrounded(700, 0.0);
    std::copy(channel.begin(), channel.end(), surrounded.begin() + 300);
    std::vector<int32_t> moved = beats;
    for (int32_t& beat : moved) beat = std::clamp(beat, -100, 300) + 300;
    const std::vector<double> weights = beatWeights(50);
    EXPECT_EQ(makeBeatTemplate(channel.data(), 200, beats, 50, weights),
              makeBeatTemplate(surrounded.data(), 700, moved, 50, weights));
  }
}

TEST(BeatTemplate, OfADeadChannelIsEmpty) {
  const std::vector<double> dead(500, 0.0);
  EXPECT_THAT(makeBeatTemplate(dead.data(), 500, {100, 150, 200}, 50, beatWeights(50)), Each(0.0));
}

TEST(BeatTemplate, IsThatOfThePlainVersionWithAFewFlatBeats) {
  std::vector<double> channel = beatingChannel(1500, 1);
  std::fill(channel.begin() + 300, channel.begin() + 900, 0.0);
  std::vector<int32_t> beats;
  for (int32_t beat = 60; beat < 1450; beat += 50) beats.push_back(beat);
  EXPECT_GT(expectSameTemplate(channel, 1500, beats, 50), 0);
}

TEST(BeatTemplate, SelectsNothingWhereASampleIsNotANumber) {
  std::vector<double> channel = beatingChannel(600, 1);
  channel[200] = notANumber;
  const std::vector<int32_t> beats{100, 150, 200, 250, 300, 350};
  EXPECT_EQ(expectSameTemplate(channel, 600, beats, 50), 0);
}

} // namespace
} // namespace emeg
