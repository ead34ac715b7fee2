#include "app/evaluation/BeatMatching.h"
#include "app/simulation/HeartBeats.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace emeg {

namespace {

constexpr double tolerance = 0.1;

std::vector<double> drawnBeats(uint64_t seed, double rmssd = 0.030) {
  HeartParameters parameters;
  parameters.rmssd = rmssd;
  std::vector<double> beats;
  for (const double time : HeartBeats::draw(parameters, seed, 180).times)
    if (time >= 0 && time < 180) beats.push_back(time);
  return beats;
}

std::vector<double> shifted(std::vector<double> times, double delay) {
  for (double& time : times) time += delay;
  return times;
}

} // namespace

TEST(BeatMatching, AConstantDelayIsFoundAndNoError) {
  for (uint64_t seed = 1; seed <= 5; seed++) {
    const std::vector<double> beats = drawnBeats(seed);
    for (const double delay : {-0.4, -0.05, 0.0, 0.2313, 0.46, 0.8}) {
      const BeatAgreement agreement = compareBeats(beats, shifted(beats, delay), tolerance);
      EXPECT_NEAR(agreement.delay, delay, 1e-9) << seed;
      EXPECT_EQ(agreement.nrOfMatched, static_cast<int64_t>(beats.size()));
      EXPECT_EQ(agreement.sensitivity(), 1);
      EXPECT_EQ(agreement.positivePredictivity(), 1);
      EXPECT_LT(agreement.largestError, 1e-9);
    }
  }
}

// Without variability every further interval fits as well, but for a beat at the end.
TEST(BeatMatching, OfEquallyGoodDelaysTheSmallestWins) {
  std::vector<double> beats;
  for (int i = 0; i < 200; i++) beats.push_back(0.8 * i);
  std::vector<double> found(beats.begin() + 3, beats.end() - 3);
  EXPECT_NEAR(compareBeats(beats, shifted(found, 0.3), tolerance).delay, 0.3, 1e-9);
  EXPECT_NEAR(compareBeats(beats, shifted(found, -0.3), tolerance).delay, -0.3, 1e-9);
}

TEST(BeatMatching, CountsAMissedAnAdditionalAndALateBeat) {
  const std::vector<double> beats = drawnBeats(1);
  const auto n = static_cast<int64_t>(beats.size());
  std::vector<double> found = shifted(beats, 0.231);
  found[20] += 0.150;
  found.push_back(found[100] + 0.4);
  found.erase(found.begin() + 50);
  std::sort(found.begin(), found.end());

  const BeatAgreement agreement = compareBeats(beats, found, tolerance);
  EXPECT_NEAR(agreement.delay, 0.231, 1e-9);
  EXPECT_EQ(agreement.nrOfTrueBeats, n);
  EXPECT_EQ(agreement.nrOfFound, n);
  EXPECT_EQ(agreement.nrOfMatched, n - 2);
  EXPECT_DOUBLE_EQ(agreement.sensitivity(), static_cast<double>(n - 2) / static_cast<double>(n));
  EXPECT_DOUBLE_EQ(agreement.positivePredictivity(), static_cast<double>(n - 2) / static_cast<double>(n));
  EXPECT_LT(agreement.largestError, 1e-9);
}

TEST(BeatMatching, ErrorsAreTakenAfterTheDelay) {
  const std::vector<double> beats = drawnBeats(2);
  std::vector<double> found = shifted(beats, 0.2);
  for (size_t i = 0; i < found.size(); i += 4) found[i] += i % 8 == 0 ? 0.020 : -0.020;
  found[9] += 0.080;
  const BeatAgreement agreement = compareBeats(beats, found, tolerance);
  EXPECT_NEAR(agreement.delay, 0.2, 1e-9);
  EXPECT_NEAR(agreement.largestError, 0.080, 1e-9);
  const auto n = static_cast<double>(found.size());
  const double squares = std::ceil(n / 4) * 0.020 * 0.020 + 0.080 * 0.080;
  EXPECT_NEAR(agreement.rmsError, std::sqrt(squares / n), 1e-9);
}

TEST(BeatMatching, OnlyBeatsOfTheFoundSpanCount) {
  const std::vector<double> beats = drawnBeats(3);
  const std::vector<double> all = shifted(beats, 0.25);
  std::vector<double> found(all.begin() + 10, all.end() - 20);
  // Somewhat early and late ends take nothing from the span, nor add to it.
  found.front() += 0.05;
  found.back() -= 0.05;
  const BeatAgreement agreement = compareBeats(beats, found, tolerance);
  EXPECT_EQ(agreement.nrOfTrueBeats, static_cast<int64_t>(found.size()));
  EXPECT_EQ(agreement.sensitivity(), 1);
}

TEST(BeatMatching, NothingBelongsToTwoPairs) {
  const std::vector<double> beats = {1, 2.1, 2.9, 4.05, 5};
  std::vector<double> found = beats;
  for (const double beat : beats) found.push_back(beat + 0.03);
  std::sort(found.begin(), found.end());
  const BeatAgreement agreement = compareBeats(beats, found, tolerance);
  EXPECT_EQ(agreement.nrOfMatched, 5);
  EXPECT_EQ(agreement.sensitivity(), 1);
  EXPECT_EQ(agreement.positivePredictivity(), 0.5);

  // Two beats close together, one pulse between them.
  const BeatAgreement pair = compareBeats({1, 2.1, 2.2, 3.4, 4}, {1, 2.15, 3.4, 4}, tolerance);
  EXPECT_EQ(pair.nrOfMatched, 4);
  EXPECT_EQ(pair.sensitivity(), 0.8);
}

TEST(BeatMatching, ManyWrongPulsesDoNotMoveTheDelay) {
  const std::vector<double> beats = drawnBeats(4, 0.060);
  std::vector<double> found = shifted(beats, 0.231);
  for (size_t i = 0; i < found.size(); i += 3) found[i] += 0.3; // a third of them
  std::sort(found.begin(), found.end());
  const BeatAgreement agreement = compareBeats(beats, found, tolerance);
  EXPECT_NEAR(agreement.delay, 0.231, 0.002);
  EXPECT_NEAR(agreement.sensitivity(), 2.0 / 3, 0.03);
}

// Pulses that know nothing of the beats find only as many as chance gives.
TEST(BeatMatching, AnotherHeartsBeatsDoNotPass) {
  const BeatAgreement agreement = compareBeats(drawnBeats(1), drawnBeats(2), tolerance);
  EXPECT_LT(agreement.sensitivity(), 0.7);
}

TEST(BeatMatching, NothingFoundAndNothingTrueAreNoAgreement) {
  const BeatAgreement none = compareBeats(drawnBeats(1), {}, tolerance);
  EXPECT_EQ(none.nrOfFound, 0);
  EXPECT_EQ(none.sensitivity(), 0);
  EXPECT_EQ(none.positivePredictivity(), 0);
  const BeatAgreement noHeart = compareBeats({}, {1, 2, 3}, tolerance);
  EXPECT_EQ(noHeart.nrOfMatched, 0);
  EXPECT_EQ(noHeart.sensitivity(), 0);
  EXPECT_EQ(noHeart.positivePredictivity(), 0);
}

} // namespace emeg
