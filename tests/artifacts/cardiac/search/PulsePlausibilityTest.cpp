#include "artifacts/cardiac/search/PulsePlausibility.h"

#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/PulseSelection.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {

namespace {

struct Judged {
  HeartPeriod heart;
  PulsePlausibility pulses;
  double rate = 0;
  double beatsPerMinute(double interval) const { return 60 * rate / interval; }
};

/// The search for heart beats in the EEG, and what it looks like.
Judged judge(const SimulationParameters& parameters) {
  const SimulatedBcg recording = simulateBcg(parameters);
  Judged judged;
  judged.rate = static_cast<double>(recording.rate);
  judged.heart = estimateHeartPeriod(recording.view());
  const std::vector<float> signal = buildPulseDetectionSignal(recording.view(), judged.heart);
  constexpr size_t capacity = 3000;
  const HeartPulses found =
      selectHeartPulses(signal, recording.rate, recording.rate / 2, judged.heart, capacity);
  judged.pulses = measurePlausibility(recording.view(), found.positions, judged.heart.period);
  return judged;
}

} // namespace

TEST(PulsePlausibility, OfAHealthyHeart) {
  for (const double rate : {55.0, 85.0}) {
    const Judged judged = judge(healthyHeart(rate, 1));
    EXPECT_NEAR(judged.beatsPerMinute(judged.pulses.commonPeriod), rate, 0.04 * rate);
    EXPECT_NEAR(judged.beatsPerMinute(judged.pulses.meanInterval), rate, 0.03 * rate);
    EXPECT_EQ(judged.pulses.offIntervals, 0);
    EXPECT_EQ(judged.pulses.firstOff, -1);
    EXPECT_GT(judged.pulses.commonShare, 0.7);
    EXPECT_EQ(judged.pulses.unlikePulses, 0);
  }
}

TEST(PulsePlausibility, AMovementThatSetsThePeriodDoesNotSetTheCommonOne) {
  SimulationParameters parameters = healthyHeart(65, 1);
  parameters.movement = MovementParameters{.peakUv = 3000, .nrOfBursts = 1};
  const Judged judged = judge(parameters);
  EXPECT_GT(std::abs(judged.heart.beatsPerMinute(250) - 65), 10) << "the movement sets it";
  EXPECT_NEAR(judged.beatsPerMinute(judged.pulses.commonPeriod), 65, 3);
}

TEST(PulsePlausibility, MissedEctopicBeatsAreUnlikeTheOthers) {
  SimulationParameters parameters = healthyHeart(65, 1);
  parameters.heart->ectopicShare = 0.1;
  EXPECT_NEAR(judge(parameters).pulses.unlikePulses, 0.11, 0.04);
}

TEST(PulsePlausibility, WithoutAHeartNothingIsInCommon) {
  SimulationParameters parameters = healthyHeart(65, 2);
  parameters.heart->peakUv = 0;
  EXPECT_LT(judge(parameters).pulses.commonShare, 0.2);
}

TEST(PulsePlausibility, CountsIntervalsThatAreOff) {
  const std::vector<std::vector<double>> silent(1, std::vector<double>(10001));
  const BcgSeries series{silent, 10000, 250};
  const PulsePlausibility pulses = measurePlausibility(series, {0, 100, 200, 300, 450, 550, 650, 720}, 100);
  EXPECT_DOUBLE_EQ(pulses.offIntervals, 2.0 / 7);
  EXPECT_EQ(pulses.firstOff, 300);
  EXPECT_EQ(pulses.medianInterval, 100);
  EXPECT_DOUBLE_EQ(pulses.meanInterval, 720.0 / 7);
  EXPECT_EQ(pulses.commonPeriod, 0);
  EXPECT_EQ(pulses.commonShare, 0);
}

TEST(PulsePlausibility, AsksForNothing) {
  const PulsePlausibility none = measurePlausibility({}, {}, 0);
  EXPECT_EQ(none.medianInterval, 0);
  EXPECT_EQ(none.commonPeriod, 0);
  const std::vector<std::vector<double>> broken(
      2, std::vector<double>(10001, std::numeric_limits<double>::quiet_NaN()));
  const PulsePlausibility pulses = measurePlausibility({broken, 10000, 250}, {500, 700, 900, 1100}, 200);
  EXPECT_EQ(pulses.commonPeriod, 0);
  EXPECT_EQ(pulses.commonShare, 0);
  EXPECT_EQ(pulses.unlikePulses, 0);
}

} // namespace emeg
