#include "artifacts/cardiac/model/PulseModel.h"
#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/PulseSelection.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"
#include "tests/artifacts/reference/LiteralDetectionSignal.h"
#include "tests/artifacts/reference/LiteralPulseSelection.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>

namespace emeg {
namespace {

constexpr float lowPassHz = 35;
constexpr size_t capacity = 3000;

/// Beats per minute, and the seed of the noise and of the heart's variability.
class SimulatedRecordings : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(SimulatedRecordings, ShowTheirBeatsAndLoseTheirArtifact) {
  const auto [beatsPerMinute, seed] = GetParam();
  const SimulatedBcg recording = simulateBcg(healthyHeart(beatsPerMinute, static_cast<uint64_t>(seed)));
  const HeartPeriod heart = estimateHeartPeriod(recording.view());
  const std::vector<float> signal = buildPulseDetectionSignal(recording.view(), heart);
  const std::vector<double> pulses =
      selectHeartPulses(signal, recording.rate, lowPassHz, heart, capacity).positions;

  PulseModel model(pulses, heart.period);
  std::vector<std::vector<double>> estimates = recording.series;
  for (std::vector<double>& estimate : estimates) model.replaceByEstimate(estimate, recording.length);
  const CardiacScore score = scoreOf(recording, pulses, estimates);
  std::printf("%d beats per minute, seed %d: %zu pulses, sensitivity %.4f, positive predictivity %.4f, "
              "explained %.4f (channels %.4f to %.4f)\n",
              beatsPerMinute, seed, pulses.size(), score.sensitivity, score.positivePredictivity,
              score.explained, score.explainedLeast, score.explainedMost);
  EXPECT_GE(score.sensitivity, 0.99);
  EXPECT_GE(score.positivePredictivity, 0.99);
  EXPECT_GE(score.explained, 0.91);

  const auto length = static_cast<int32_t>(recording.length);
  const LiteralPeriod literal = literalHeartPeriod(recording.series, length, recording.rate);
  EXPECT_EQ(heart.period, literal.period);
  const std::vector<float> literalSignal = literalDetectionSignal(recording.series, length, literal);
  EXPECT_EQ(signal, literalSignal);
  EXPECT_EQ(pulses, literalPulsePositions(literalSignal, length, recording.rate, literal));
}

std::string nameOfRecording(const ::testing::TestParamInfo<SimulatedRecordings::ParamType>& info) {
  const auto [beatsPerMinute, seed] = info.param;
  return std::to_string(beatsPerMinute) + "BeatsPerMinuteSeed" + std::to_string(seed);
}

INSTANTIATE_TEST_SUITE_P(HealthyHeart, SimulatedRecordings,
                         ::testing::Combine(::testing::Values(55, 65, 75, 85), ::testing::Range(1, 6)),
                         nameOfRecording);

} // namespace
} // namespace emeg
