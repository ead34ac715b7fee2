#include "artifacts/cardiac/known/PulseDelay.h"

#include "artifacts/cardiac/known/KnownPulses.h"
#include "artifacts/cardiac/model/PulseModel.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A beat every second, and in every channel a wave of 60 ms that many samples later, in a little noise.
struct Beating {
  std::vector<double> beats;
  std::vector<std::vector<double>> channels;
  BcgSeries view() const { return {channels, static_cast<int64_t>(channels[0].size()) - 1, 250}; }
};

Beating beatingWith(const std::vector<int>& delays, double size = 50) {
  Beating beating;
  for (int k = 1; k < 60; ++k) beating.beats.push_back(250 * k + std::floor(10 * std::sin(k)));
  for (const int delay : delays) {
    std::vector<double> samples(15001);
    for (size_t i = 0; i < samples.size(); ++i)
      samples[i] =
          5 * std::sin(0.37 * static_cast<double>(i) + delay) + 5 * std::sin(0.11 * static_cast<double>(i));
    for (const double beat : beating.beats)
      for (int j = -60; j <= 60; ++j) {
        const auto at = static_cast<int64_t>(beat) + delay + j;
        if (at < 15000) samples[static_cast<size_t>(at)] += size * std::exp(-0.5 * std::pow(j / 15.0, 2));
      }
    beating.channels.push_back(std::move(samples));
  }
  return beating;
}

} // namespace

TEST(PulseDelay, EveryChannelHasItsOwn) {
  const Beating beating = beatingWith({0, 40, 75, 120});
  const std::vector<int32_t> delays = fitPulseDelays(beating.view(), beating.beats, 250);
  ASSERT_EQ(delays.size(), 4u);
  EXPECT_NEAR(delays[0], 0, 4);
  EXPECT_NEAR(delays[1], 40, 4);
  EXPECT_NEAR(delays[2], 75, 4);
  EXPECT_NEAR(delays[3], 120, 4);
}

TEST(PulseDelay, AMovementCountsNoMoreThanABeat) {
  Beating beating = beatingWith({75});
  for (size_t i = 7000; i < 7300; ++i) beating.channels[0][i] += 1e4 * std::sin(0.1 * static_cast<double>(i));
  EXPECT_NEAR(fitPulseDelays(beating.view(), beating.beats, 250)[0], 75, 5);
}

TEST(PulseDelay, AChannelWithoutArtifactFollowsTheOthers) {
  Beating beating = beatingWith({50, 60, 70});
  const Beating none = beatingWith({0}, 0);
  beating.channels.push_back(none.channels[0]);
  beating.channels.emplace_back(15001, 0.0);
  const std::vector<int32_t> delays = fitPulseDelays(beating.view(), beating.beats, 250);
  EXPECT_EQ(delays[3], delays[1]);
  EXPECT_EQ(delays[4], delays[1]);
}

TEST(PulseDelay, IsZeroWithoutBeats) {
  const Beating beating = beatingWith({75});
  EXPECT_THAT(fitPulseDelays(beating.view(), {}, 250), ElementsAre(0));
  EXPECT_THAT(fitPulseDelays(beating.view(), beating.beats, 0), ElementsAre(0));
}

TEST(PulseDelay, BeatsThatEndUpBehindTheSeriesAreNone) {
  EXPECT_THAT(delayedPulses({10, 20, 30}, 5, 30), ElementsAre(15, 25));
  EXPECT_THAT(delayedPulses({}, 5, 30), IsEmpty());
}

// The R peaks stand 0.2 s in front of the artifact's onset, the artifact's middle 0.15 s behind it.
TEST(PulseDelay, WithItTheModelExplainsWhatThePulsesThatAreFoundInTheEegExplain) {
  const SimulatedBcg recording = simulateBcg(healthyHeart(65, 1));
  std::vector<double> rPeaks;
  for (const double onset : recording.beats)
    rPeaks.push_back(onset - 0.2 * static_cast<double>(recording.rate));
  const KnownPulses known = usablePulses(rPeaks, recording.length, recording.rate, true);
  const int32_t period = periodOfPulses(known.positions).period;
  const std::vector<int32_t> delays = fitPulseDelays(recording.view(), known.positions, period);
  std::vector<std::vector<double>> estimates = recording.series;
  for (size_t c = 0; c < delays.size(); ++c) {
    EXPECT_NEAR(delays[c], 0.37 * static_cast<double>(recording.rate), 20) << c;
    const std::vector<double> pulses = delayedPulses(known.positions, delays[c], recording.length);
    PulseModel(pulses, period).replaceByEstimate(estimates[c], recording.length);
  }
  const CardiacScore score =
      scoreOf(recording, delayedPulses(known.positions, delays[0], recording.length), estimates);
  EXPECT_EQ(score.sensitivity, 1);
  EXPECT_EQ(score.positivePredictivity, 1);
  EXPECT_GT(score.explained, 0.93);
}

TEST(PulseDelay, ByHowMuchItIsOffHardlyMattersToTheModel) {
  SimulationParameters parameters = healthyHeart(75, 2);
  parameters.heart->ectopicShare = 0.05;
  const SimulatedBcg recording = simulateBcg(parameters);
  const auto rate = static_cast<double>(recording.rate);
  std::vector<double> explained;
  for (const double delay : {0.0, 0.15, 0.3, 0.5, 0.7}) { // behind the R peak
    std::vector<double> pulses;
    for (const double onset : recording.beats) pulses.push_back(onset + (delay - 0.2) * rate);
    pulses = usablePulses(pulses, recording.length, recording.rate, true).positions;
    PulseModel model(pulses, periodOfPulses(pulses).period);
    std::vector<std::vector<double>> estimates = recording.series;
    for (std::vector<double>& estimate : estimates) model.replaceByEstimate(estimate, recording.length);
    explained.push_back(scoreOf(recording, pulses, estimates).explained);
  }
  const auto [least, most] = std::minmax_element(explained.begin(), explained.end());
  EXPECT_GT(*least, 0.93);
  EXPECT_LT(*most - *least, 0.02);
}

} // namespace emeg
