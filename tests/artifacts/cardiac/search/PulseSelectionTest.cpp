#include "artifacts/cardiac/search/PulseSelection.h"

#include "artifacts/cardiac/search/DetectionSignal.h"
#include "tests/artifacts/cardiac/TestRecordings.h"
#include "tests/artifacts/reference/LiteralDetectionSignal.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace emeg {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr size_t capacity = 3000;
constexpr float lowPassHz = 35;

/// Returns how many there are.
size_t expectSamePulses(const std::vector<float>& signal, float rate, const HeartPeriod& heart,
                        size_t room = capacity) {
  const HeartPulses pulses = selectHeartPulses(signal, rate, lowPassHz, heart, room);
  EXPECT_EQ(pulses.positions, literalPulsePositions(signal, static_cast<int32_t>(signal.size()), rate,
                                                    literalOf(heart), static_cast<int32_t>(room)));
  return pulses.positions.size();
}

/// From the samples to the pulses, by either implementation.
void expectSamePulses(const std::vector<TestRecording>& recordings) {
  for (const TestRecording& recording : recordings) {
    SCOPED_TRACE(recording.name);
    const HeartPeriod heart = estimateHeartPeriod(recording.view());
    const HeartPulses pulses = selectHeartPulses(buildPulseDetectionSignal(recording.view(), heart),
                                                 recording.rate, lowPassHz, heart, capacity);
    const LiteralPeriod literal = literalHeartPeriod(recording.channels, recording.length, recording.rate);
    EXPECT_EQ(pulses.positions,
              literalPulsePositions(literalDetectionSignal(recording.channels, recording.length, literal),
                                    recording.length, recording.rate, literal));
  }
}

/// Zero but for a minimum of one sample at each beat.
std::vector<float> signalWithBeats(int32_t length, const std::vector<int32_t>& beats) {
  std::vector<float> signal(static_cast<size_t>(length), 0.0F);
  for (const int32_t beat : beats) signal[static_cast<size_t>(beat)] = -1;
  return signal;
}

TEST(PulseSelection, IsThatOfThePlainVersionInSimulatedRecordings) {
  expectSamePulses(simulatedRecordings());
}

TEST(PulseSelection, IsThatOfThePlainVersionInNoise) {
  expectSamePulses(noiseRecordings(20000, 150));
}

TEST(PulseSelection, IsThatOfThePlainVersionInTiedRecordings) {
  expectSamePulses(tiedRecordings());
}

TEST(PulseSelection, IsThatOfThePlainVersionWithDeadChannels) {
  expectSamePulses(impairedRecordings());
}

TEST(PulseSelection, IsThatOfThePlainVersionInShortRecordings) {
  expectSamePulses(shortRecordings());
}

TEST(PulseSelection, IsThatOfThePlainVersionForHugeAndTinySamples) {
  expectSamePulses(extremeRecordings());
}

TEST(PulseSelection, IsThatOfThePlainVersionInRandomDetectionSignals) {
  size_t nrOfPulses = 0;
  for (uint32_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto period = static_cast<int32_t>(10 + random() % 90U);
    const double regularity = 0.1 * static_cast<double>(random() % 12U);
    const double levels = static_cast<double>(4 + random() % 200U); // coarse values agree often
    std::vector<float> signal;
    double phase = 0;
    const auto length = static_cast<int>(random() % 4000U);
    for (int i = 0; i < length; ++i) {
      phase += (1 + 0.2 * (static_cast<double>(random() % 1000U) / 1000 - 0.5)) / period;
      const double value =
          regularity * std::cos(6.2831853 * phase) + static_cast<double>(random() % 1000U) / 1000;
      signal.push_back(static_cast<float>(std::round(value * levels) / levels));
    }
    nrOfPulses += expectSamePulses(signal, 100, heartOfPeriod(period));
  }
  EXPECT_GT(nrOfPulses, 5000U);
}

TEST(PulseSelection, FindsEveryBeatOfARegularRecording) {
  std::vector<float> signal(3000, 0.0F);
  std::vector<double> expected;
  for (size_t p = 100; p <= 2900; p += 100) {
    signal[p] = p == 1500 ? -0.1F : -1.0F;
    signal[p + 40] = -0.3F;
    expected.push_back(static_cast<double>(p));
  }
  // The weak beat at 1500 is shallower than the false one behind it and is found by the linking.
  EXPECT_EQ(selectHeartPulses(signal, 250, lowPassHz, {100, 71, 141}, capacity).positions, expected);
  expectSamePulses(signal, 250, {100, 71, 141});
}

TEST(PulseSelection, FindsNothingInAFlatSignal) {
  const HeartPulses pulses =
      selectHeartPulses(std::vector<float>(1000, -1.0F), 250, lowPassHz, heartOfPeriod(100), capacity);
  EXPECT_THAT(pulses.positions, IsEmpty());
  EXPECT_FALSE(pulses.listIsFull);
}

TEST(PulseSelection, FindsNothingInAnEmptySignalOrWithoutAPeriod) {
  EXPECT_THAT(selectHeartPulses({}, 250, lowPassHz, heartOfPeriod(100), capacity).positions, IsEmpty());
  const std::vector<float> signal = signalWithBeats(1000, {100, 200, 300, 400, 500});
  EXPECT_THAT(selectHeartPulses(signal, 250, lowPassHz, {0, 0, 0}, capacity).positions, IsEmpty());
  EXPECT_THAT(selectHeartPulses(signal, 250, lowPassHz, {100, 71, 141}, capacity).positions,
              ElementsAre(100, 200, 300, 400, 500));
}

TEST(PulseSelection, NeedsTwoIntervalsThatAreAlike) {
  EXPECT_THAT(selectHeartPulses(signalWithBeats(1000, {100, 200}), 250, lowPassHz, {100, 71, 141}, capacity)
                  .positions,
              IsEmpty());
  EXPECT_THAT(
      selectHeartPulses(signalWithBeats(1000, {100, 200, 300}), 250, lowPassHz, {100, 71, 141}, capacity)
          .positions,
      ElementsAre(100, 200, 300));
}

TEST(PulseSelection, StopsWhenTheListIsFullAndSaysSo) {
  std::vector<int32_t> beats;
  for (int32_t beat = 100; beat <= 2900; beat += 100) beats.push_back(beat);
  const std::vector<float> signal = signalWithBeats(3000, beats);
  for (const size_t room : std::vector<size_t>{0, 1, 5, 28, 29, 30}) {
    const HeartPulses pulses = selectHeartPulses(signal, 250, lowPassHz, {100, 71, 141}, room);
    EXPECT_EQ(pulses.positions.size(), std::min<size_t>(room, 29));
    EXPECT_EQ(pulses.listIsFull, room < 29) << room;
    expectSamePulses(signal, 250, {100, 71, 141}, room);
  }
}

TEST(PulseSelection, HasRoomForAsManyPulsesAsItIsGiven) {
  std::vector<int32_t> beats;
  for (int32_t beat = 10; beat < 35000; beat += 10) beats.push_back(beat);
  const std::vector<float> signal = signalWithBeats(35000, beats);
  EXPECT_EQ(expectSamePulses(signal, 10, {10, 7, 14}, 3000), 3000U);
  EXPECT_TRUE(selectHeartPulses(signal, 10, lowPassHz, {10, 7, 14}, 3000).listIsFull);
  EXPECT_EQ(expectSamePulses(signal, 10, {10, 7, 14}, 10000), beats.size());
  EXPECT_FALSE(selectHeartPulses(signal, 10, lowPassHz, {10, 7, 14}, 10000).listIsFull);
}

TEST(PulseSelection, LooksAtNoMoreMinimaThanTheLowPassLets) {
  // A beat every ten samples: at 1000 Hz 100 a second, of which the first 35 % count.
  std::vector<int32_t> beats;
  for (int32_t beat = 10; beat < 2000; beat += 10) beats.push_back(beat);
  const std::vector<float> signal = signalWithBeats(2000, beats);
  const HeartPulses pulses = selectHeartPulses(signal, 1000, lowPassHz, {10, 7, 14}, capacity);
  EXPECT_EQ(pulses.positions.size(), 70U);
  EXPECT_EQ(pulses.positions.back(), 700);
  EXPECT_EQ(selectHeartPulses(signal, 1000, 17.5F, {10, 7, 14}, capacity).positions.size(), 35U);
  expectSamePulses(signal, 1000, {10, 7, 14});
}

TEST(PulseSelection, HasRoomForAsManySeedsAsShortestIntervalsInTheSignal) {
  // As close together as seeds can be.
  for (const int32_t shortest : {1, 2, 3}) {
    std::vector<int32_t> beats;
    for (int32_t beat = 1; beat < 25; beat += shortest + 1) beats.push_back(beat);
    expectSamePulses(signalWithBeats(25, beats), 10, {shortest, shortest, 2 * shortest + 2});
  }
}

TEST(PulseSelection, IsThatOfThePlainVersionAmongValuesThatAreNotNumbers) {
  for (uint32_t seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<float> signal;
    for (int i = 0; i < 1500; ++i) {
      const uint32_t kind = random() % 60U;
      const double beat = std::cos(6.2831853 * i / 50);
      signal.push_back(kind == 0   ? std::numeric_limits<float>::quiet_NaN()
                       : kind == 1 ? std::numeric_limits<float>::infinity()
                       : kind == 2 ? -std::numeric_limits<float>::infinity()
                                   : static_cast<float>(beat + 0.001 * static_cast<double>(random() % 500U)));
    }
    expectSamePulses(signal, 50, heartOfPeriod(50));
  }
}

TEST(PulseSelection, EndsOnEveryInput) {
  for (uint32_t seed = 0; seed < 300; ++seed) {
    std::mt19937 random(seed);
    std::vector<float> signal;
    for (uint32_t i = random() % 600U; i > 0; --i) signal.push_back(static_cast<float>(random() % 3U));
    const HeartPeriod heart{static_cast<int32_t>(random() % 20U), static_cast<int32_t>(random() % 20U),
                            static_cast<int32_t>(random() % 40U)};
    const std::vector<double> pulses = selectHeartPulses(signal, 20, lowPassHz, heart, capacity).positions;
    for (size_t k = 1; k < pulses.size(); ++k) EXPECT_GT(pulses[k], pulses[k - 1]);
  }
}

} // namespace
} // namespace emeg
