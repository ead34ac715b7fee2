#include "tests/artifacts/reference/LiteralDetectionSignal.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace emeg {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Zero but for unit impulses.
std::vector<double> impulses(int32_t length, const std::vector<int32_t>& positions) {
  std::vector<double> channel(static_cast<std::size_t>(length), 0.0);
  for (const int32_t p : positions) channel[static_cast<std::size_t>(p)] = 1.0;
  return channel;
}

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

TEST(LiteralDetectionSignal, LeadsToTheBeatsOfASimulatedChannel) {
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
