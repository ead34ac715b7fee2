#include "artifacts/cardiac/search/DetectionSignal.h"

#include "artifacts/cardiac/search/BeatWeights.h"
#include "artifacts/cardiac/series/WindowSums.h"
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
using ::testing::IsEmpty;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

void expectSameSignal(const TestRecording& recording, const HeartPeriod& heart) {
  SCOPED_TRACE(recording.name + ", period " + std::to_string(heart.period));
  EXPECT_TRUE(sameValues(buildPulseDetectionSignal(recording.view(), heart),
                         literalDetectionSignal(recording.channels, recording.length, literalOf(heart))));
}

void expectSameSignals(const std::vector<TestRecording>& recordings) {
  for (const TestRecording& recording : recordings)
    expectSameSignal(recording, estimateHeartPeriod(recording.view()));
}

std::vector<float> signalOf(const std::vector<std::vector<double>>& channels, const HeartPeriod& heart) {
  return buildPulseDetectionSignal(makeRecording("", channels, 50).view(), heart);
}

TEST(DetectionSignal, IsThatOfThePlainVersionInSimulatedRecordings) {
  expectSameSignals(simulatedRecordings());
}

TEST(DetectionSignal, IsThatOfThePlainVersionInNoise) {
  expectSameSignals(noiseRecordings(9000, 150));
}

TEST(DetectionSignal, IsThatOfThePlainVersionInTiedRecordings) {
  expectSameSignals(tiedRecordings());
}

TEST(DetectionSignal, IsThatOfThePlainVersionWithDeadChannels) {
  expectSameSignals(impairedRecordings());
}

TEST(DetectionSignal, IsThatOfThePlainVersionWhereTheListOfBeatsIsFull) {
  const TestRecording recording = stuckRecordings().front();
  expectSameSignal(recording, {1, 1, 3});
}

TEST(DetectionSignal, IsThatOfThePlainVersionInShortRecordings) {
  expectSameSignals(shortRecordings());
}

TEST(DetectionSignal, IsThatOfThePlainVersionForHugeAndTinySamples) {
  expectSameSignals(extremeRecordings());
}

TEST(DetectionSignal, IsThatOfThePlainVersionForEveryPeriod) {
  for (const TestRecording& recording : noiseRecordings(10000, 12))
    for (const int32_t period : {1, 2, 3, 5, 40}) expectSameSignal(recording, heartOfPeriod(period));
}

TEST(DetectionSignal, OfAChannelIsThatOfThePlainVersionWhateverTheLengthAndTheTemplate) {
  std::mt19937 random(1);
  std::normal_distribution<double> gaussian;
  for (const int32_t period : {1, 4, 15}) {
    const std::vector<double> weights = beatWeights(period);
    // Around the lengths at which another block of positions begins.
    for (const int32_t length : {0, 1, 2 * period, 2 * period + 1, 2 * period + 2, 1023 + 2 * period,
                                 1024 + 2 * period, 1025 + 2 * period, 3000}) {
      std::vector<double> channel;
      for (int32_t i = 0; i < length; ++i) channel.push_back(gaussian(random));
      std::vector<double> beatTemplate;
      for (size_t i = 0; i < weights.size(); ++i) beatTemplate.push_back(gaussian(random));
      const std::vector<float> signal =
          channelDetectionSignal(channel.data(), length, period, weights, beatTemplate);
      EXPECT_TRUE(sameValues(signal, literalChannelSignal(channel, length, beatTemplate, period)))
          << length << " samples, period " << period;
    }
  }
}

/// With a template of one wave.
void expectSameChannelSignal(const std::vector<double>& channel, int32_t period, bool evenTemplate) {
  const auto length = static_cast<int32_t>(channel.size());
  std::vector<double> beatTemplate;
  for (int32_t j = -period; j <= period; ++j) {
    const double x = 3.0 * j / period;
    beatTemplate.push_back(evenTemplate ? std::cos(x) : std::sin(x));
  }
  EXPECT_TRUE(
      sameValues(channelDetectionSignal(channel.data(), length, period, beatWeights(period), beatTemplate),
                 literalChannelSignal(channel, length, beatTemplate, period)));
}

TEST(DetectionSignal, OfAChannelIsThatOfThePlainVersionWhereItVanishesButForRounding) {
  // An odd signal around sample 500 and every 100th one, under an even template; and a ramp, under an odd
  // one.
  std::vector<double> odd;
  std::vector<double> even;
  for (int i = 0; i < 3000; ++i) {
    odd.push_back(std::sin(2 * 3.14159265358979323846 * (i - 500) / 100));
    even.push_back(std::abs((i % 100) - 50));
  }
  for (const int32_t period : {7, 20, 50}) {
    expectSameChannelSignal(odd, period, true);
    expectSameChannelSignal(odd, period, false);
    expectSameChannelSignal(even, period, true);
    expectSameChannelSignal(even, period, false);
  }
}

TEST(DetectionSignal, OfAChannelIsThatOfThePlainVersionWhereItNearlyVanishes) {
  // Small beside what is summed up: the rounding of the sums reaches into the digits of a float.
  const std::vector<double> small = beatingChannel(3000, 1);
  for (const double factor : {1e-6, 1e-9, 1e-12}) {
    SCOPED_TRACE(factor);
    std::vector<double> channel;
    for (size_t i = 0; i < small.size(); ++i)
      channel.push_back(std::sin(2 * 3.14159265358979323846 * static_cast<double>(i % 4) / 4) +
                        factor * small[i]);
    expectSameChannelSignal(channel, 50, true);
    expectSameChannelSignal(channel, 50, false);
  }
}

TEST(DetectionSignal, OfAChannelIsThatOfThePlainVersionBesideSamplesOfAnotherScale) {
  for (const double large : {1e4, 1e8, 1e16, 1e100, 1e200}) {
    SCOPED_TRACE(large);
    std::vector<double> channel = beatingChannel(3000, 1);
    for (const size_t place : std::vector<size_t>{300, 301, 1500, 2990}) channel[place] *= large;
    std::fill(channel.begin() + 2000, channel.begin() + 2200, 0.0);
    channel[2100] = 1 / large;
    expectSameChannelSignal(channel, 20, true);
    expectSameChannelSignal(channel, 50, false);
  }
}

TEST(DetectionSignal, OfAChannelIsThatOfThePlainVersionForSamplesOfEveryScale) {
  for (int exponent = -170; exponent <= 150; exponent += exponent < -140 ? 1 : 10) {
    SCOPED_TRACE(exponent);
    std::vector<double> channel = beatingChannel(1200, 1);
    for (double& x : channel) x *= std::pow(10.0, exponent);
    expectSameChannelSignal(channel, 20, false);
  }
}

TEST(WindowSums, AreTheSumsOfEveryWindow) {
  std::vector<double> values;
  for (int i = 0; i < 200; ++i) values.push_back((i * 37) % 101);
  for (const int64_t taps : {1, 2, 7, 60})
    for (const int64_t count : {1, 2, 6, 7, 8, 59, 60, 61, 140}) {
      std::vector<double> sums(static_cast<size_t>(count));
      std::vector<double> scratch(static_cast<size_t>(count + taps - 1));
      windowSums(values.data(), taps, count, sums.data(), scratch.data());
      for (size_t p = 0; p < sums.size(); ++p) {
        double expected = 0;
        for (size_t i = 0; i < static_cast<size_t>(taps); ++i) expected += values[p + i];
        ASSERT_EQ(sums[p], expected) << "window " << p << " of " << count << ", " << taps << " values";
      }
    }
}

TEST(DetectionSignal, OfAChannelCorrelatesEverySegmentWithTheTemplate) {
  const std::vector<double> channel{5, 0, 3, 4, 0, 0, 0, 0, 6, 8};
  const std::vector<float> signal = channelDetectionSignal(channel.data(), 10, 1, beatWeights(1), {0, 2, 0});
  // 0 at both ends and where the segment is flat.
  EXPECT_THAT(signal, ElementsAre(0.0F, 0.0F, static_cast<float>(-2.0 / 5), static_cast<float>(-8.0 / 3 / 5),
                                  0.0F, 0.0F, 0.0F, 0.0F, static_cast<float>(-4.0 / 10), 0.0F));
}

TEST(DetectionSignal, IsZeroWithinAPeriodOfEitherEndOnly) {
  const std::vector<float> signal = signalOf({beatingChannel(1500, 1)}, heartOfPeriod(50));
  ASSERT_EQ(signal.size(), 1500U);
  for (size_t i = 0; i < 50; ++i) {
    EXPECT_EQ(signal[i], 0.0F);
    EXPECT_EQ(signal[1499 - i], 0.0F);
  }
  EXPECT_NE(signal[50], 0.0F);
  EXPECT_NE(signal[1449], 0.0F);
}

TEST(DetectionSignal, IsZeroWhereTheOnlyBeatLeavesAnEmptyTemplate) {
  const std::vector<float> signal = signalOf({beatingChannel(321, 4)}, heartOfPeriod(50));
  EXPECT_EQ(signal.size(), 321U);
  EXPECT_THAT(signal, Each(0.0F));
}

TEST(DetectionSignal, IsTheUpperMedianOfTheChannels) {
  const std::vector<double> beating = beatingChannel(1500, 1);
  const std::vector<double> dead(1500, 0.0);
  const HeartPeriod heart = heartOfPeriod(50);
  // A dead channel contributes zeros: of one good and one dead channel the larger value, of one good and two
  // dead ones always zero.
  const std::vector<float> signal = signalOf({beating, dead}, heart);
  EXPECT_GE(*std::min_element(signal.begin(), signal.end()), 0.0F);
  EXPECT_GT(*std::max_element(signal.begin(), signal.end()), 0.0F);
  EXPECT_THAT(signalOf({beating, dead, dead}, heart), Each(0.0F));
}

TEST(DetectionSignal, IsEmptyWithoutAPeriod) {
  EXPECT_THAT(signalOf({beatingChannel(1000, 1)}, {0, 0, 0}), IsEmpty());
}

TEST(DetectionSignal, IsEmptyWhereNoChannelHasEnergy) {
  const std::vector<double> dead(3000, 0.0);
  EXPECT_THAT(signalOf({dead, dead}, heartOfPeriod(50)), IsEmpty());
  EXPECT_THAT(signalOf({std::vector<double>(3000, 1e-200)}, heartOfPeriod(50)), IsEmpty());
  EXPECT_THAT(signalOf({std::vector<double>(3000, notANumber)}, heartOfPeriod(50)), IsEmpty());
}

TEST(DetectionSignal, IsEmptyWithoutChannels) {
  const std::vector<std::vector<double>> none;
  EXPECT_THAT(buildPulseDetectionSignal({none, 1000, 250}, heartOfPeriod(50)), IsEmpty());
}

TEST(DetectionSignal, IsZeroOverAChannelWithInfiniteSamples) {
  std::vector<double> channel = beatingChannel(1500, 1);
  channel[700] = infinite;
  expectSameSignal(makeRecording("infinite", {channel}, 50), heartOfPeriod(50));
}

TEST(DetectionSignal, LeavesOutAChannelWithASampleThatIsNotANumber) {
  std::vector<double> channel = beatingChannel(1500, 1);
  channel[700] = notANumber;
  EXPECT_THAT(signalOf({channel}, heartOfPeriod(50)), IsEmpty());
  const std::vector<double> healthy = beatingChannel(1500, 2);
  const std::vector<float> signal = signalOf({channel, healthy, healthy}, heartOfPeriod(50));
  ASSERT_EQ(signal.size(), 1500U);
  EXPECT_LT(*std::min_element(signal.begin(), signal.end()), 0.0F);
}

TEST(DetectionSignal, DoesNotReadBehindTheEndOfTheSeries) {
  const HeartPeriod heart = heartOfPeriod(50);
  std::vector<std::vector<double>> channels{beatingChannel(1500, 1)};
  const std::vector<float> expected = signalOf(channels, heart);
  channels[0].insert(channels[0].end(), 500, notANumber);
  EXPECT_TRUE(sameValues(buildPulseDetectionSignal({channels, 1500, 50}, heart), expected));
}

} // namespace
} // namespace emeg
