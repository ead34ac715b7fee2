#include "artifacts/cardiac/known/RPeaks.h"

#include "tests/artifacts/cardiac/SimulatedEcg.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {

namespace {

using testing::IsEmpty;

/// The least of what is measured in three minutes of each seed.
void expectFound(const EcgCase& ecgCase, double sensitivity, double predictivity) {
  for (const uint64_t seed : {1u, 2u}) {
    const BeatAgreement agreement = foundRPeaks(ecgCase, seed);
    EXPECT_GE(agreement.sensitivity(), sensitivity) << "seed " << seed;
    EXPECT_GE(agreement.positivePredictivity(), predictivity) << "seed " << seed;
    EXPECT_LT(agreement.rmsError, 0.006) << "seed " << seed;
  }
}

} // namespace

TEST(RPeaks, EveryOneIsFoundWhereItIs) {
  for (const double beatsPerMinute : {40.0, 65.0, 110.0}) {
    const EcgCase quiet{.beatsPerMinute = beatsPerMinute};
    expectFound(quiet, 1, 1);
    EXPECT_NEAR(foundRPeaks(quiet, 1).delay, 0, 0.002);
  }
}

TEST(RPeaks, TWavesHigherThanRAreNone) {
  expectFound({.tWave = 1.5}, 1, 1);
  expectFound({.beatsPerMinute = 110, .tWave = 2.5}, 1, 1);
}

TEST(RPeaks, LeadsMayBeTheWrongWayRound) {
  expectFound({.rPeakUv = -1000}, 1, 1);
  expectFound({.tWave = 1.5, .rPeakUv = -1000}, 1, 1);
}

TEST(RPeaks, EctopicBeatsAreFoundAlthoughTheyLookDifferent) {
  expectFound({.ectopicShare = 0.1}, 1, 1);
}

TEST(RPeaks, NoiseHidesHardlyAny) {
  expectFound({.noiseUv = 100}, 1, 1);
  expectFound({.noiseUv = 150}, 0.98, 0.98);
}

TEST(RPeaks, WhatIsLeftOfTheGradientArtifactIsNoBeat) {
  expectFound({.residueUv = 500}, 1, 1);
  expectFound({.rmssd = 0.005, .residueUv = 500}, 1, 1);
}

TEST(RPeaks, DropoutsCostOnlyTheirOwnBeats) {
  const EcgCase dropouts{.nrOfDropouts = 3};
  for (const uint64_t seed : {1u, 2u}) {
    const BeatAgreement agreement = foundRPeaks(dropouts, seed);
    EXPECT_EQ(agreement.positivePredictivity(), 1) << seed;
    EXPECT_LE(agreement.nrOfTrueBeats - agreement.nrOfMatched, 15) << seed; // of 12 s
  }
}

TEST(RPeaks, SpikesDoNotRaiseTheThreshold) {
  expectFound({.nrOfSpikes = 20}, 0.9, 0.97);
}

TEST(RPeaks, SizeAndUnitDoNotMatter) {
  SimulatedEcg ecg = simulateEcg({.ectopicShare = 0.05}, 3);
  const std::vector<double> inMicrovolts = findRPeaks(ecg.samples, ecg.rate);
  for (double& sample : ecg.samples) sample *= 0x1p-20;
  EXPECT_EQ(findRPeaks(ecg.samples, ecg.rate), inMicrovolts);
}

TEST(RPeaks, AFlatOrShortOrImpossibleChannelHasNone) {
  EXPECT_THAT(findRPeaks({}, 250), IsEmpty());
  EXPECT_THAT(findRPeaks(std::vector<double>(10000, 0.0), 250), IsEmpty());
  EXPECT_THAT(findRPeaks(std::vector<double>(10000, 5.0), 250), IsEmpty());
  SimulatedEcg ecg = simulateEcg({}, 1);
  EXPECT_THAT(findRPeaks(std::span(ecg.samples).first(200), 250), IsEmpty());
  EXPECT_THAT(findRPeaks(ecg.samples, 50), IsEmpty());
  ecg.samples[1000] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THAT(findRPeaks(ecg.samples, 250), IsEmpty());
}

} // namespace emeg
