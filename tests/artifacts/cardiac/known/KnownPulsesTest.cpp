#include "artifacts/cardiac/known/KnownPulses.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr float rate = 250;
constexpr int64_t length = 15000; // one minute

/// A beat about every 0.92 s, a little irregular.
std::vector<double> regularBeats() {
  std::vector<double> beats;
  for (int k = 0; k < 60; ++k) beats.push_back(std::floor(200 + 230 * k + 8 * std::sin(0.7 * k)));
  return beats;
}

KnownPulses usable(const std::vector<double>& beats) {
  return usablePulses(beats, length, rate, true);
}

} // namespace

TEST(KnownPulses, GoodBeatsStayAsTheyAre) {
  const KnownPulses pulses = usable(regularBeats());
  EXPECT_EQ(pulses.positions, regularBeats());
  EXPECT_EQ(pulses.nrOfOutside + pulses.nrOfDoubled + pulses.nrOfStray, 0);
  EXPECT_THAT(pulses.gaps, IsEmpty());
}

TEST(KnownPulses, AreSortedAndWholeSamples) {
  std::vector<double> beats = regularBeats();
  for (double& beat : beats) beat += 0.3;
  std::reverse(beats.begin(), beats.end());
  EXPECT_EQ(usable(beats).positions, regularBeats());
}

TEST(KnownPulses, OfDoubledBeatsTheOneThatFitsStays) {
  std::vector<double> beats = regularBeats();
  beats.push_back(beats[10]);      // the same once more
  beats.push_back(beats[20] + 30); // an echo
  beats.push_back(beats[30] - 40);
  const KnownPulses pulses = usable(beats);
  EXPECT_EQ(pulses.positions, regularBeats());
  EXPECT_EQ(pulses.nrOfDoubled, 3);
}

TEST(KnownPulses, StrayBeatsOfARegularRhythmAreLeftOut) {
  std::vector<double> beats = regularBeats();
  for (const size_t k : {5u, 25u, 40u}) beats.push_back(beats[k] + 100);
  const KnownPulses pulses = usable(beats);
  EXPECT_EQ(pulses.positions, regularBeats());
  EXPECT_EQ(pulses.nrOfStray, 3);
  const KnownPulses all = usablePulses(beats, length, rate, false);
  EXPECT_EQ(all.positions.size(), 63u) << "found in an electrocardiogram: nothing is stray";
}

TEST(KnownPulses, EctopicBeatsAndTheirPausesStay) {
  std::vector<double> beats = regularBeats();
  for (const size_t k : {5u, 25u, 40u}) beats[k] -= 80;
  const KnownPulses pulses = usable(beats);
  EXPECT_EQ(pulses.positions, beats);
}

TEST(KnownPulses, AnIrregularHeartIsNeitherThinnedNorFilled) {
  RandomGenerator random(7, RandomGenerator::Purpose::HeartBeats);
  std::vector<double> beats;
  for (double at = 100; at < length; at += 250 * random.uniform(0.45, 1.1)) beats.push_back(std::floor(at));
  EXPECT_EQ(usable(beats).positions, beats);
}

TEST(KnownPulses, MissingBeatsAreFilledEvenlyAndTold) {
  std::vector<double> beats = regularBeats();
  beats.erase(beats.begin() + 10);
  beats.erase(beats.begin() + 30, beats.begin() + 40);
  const KnownPulses pulses = usable(beats);
  ASSERT_EQ(pulses.positions.size(), 60u);
  for (size_t k = 0; k < 60; ++k) EXPECT_NEAR(pulses.positions[k], regularBeats()[k], 20) << k;
  ASSERT_EQ(pulses.gaps.size(), 2u);
  EXPECT_EQ(pulses.gaps[0].nrOfBeats, 1);
  EXPECT_EQ(pulses.gaps[1].nrOfBeats, 10);
  EXPECT_EQ(pulses.gaps[1].from, regularBeats()[30]);
  EXPECT_EQ(pulses.gaps[1].to, regularBeats()[41]);
}

TEST(KnownPulses, WhatIsNoPlaceInTheSeriesIsLeftOut) {
  std::vector<double> beats = regularBeats();
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double place : {-1.0, -1e300, 15000.0, 1e300, notANumber, infinite, -infinite})
    beats.push_back(place);
  const KnownPulses pulses = usable(beats);
  EXPECT_EQ(pulses.positions, regularBeats());
  EXPECT_EQ(pulses.nrOfOutside, 7);
}

TEST(KnownPulses, HostileListsGiveASpacedListOfBoundedLength) {
  std::vector<std::vector<double>> lists = {{}, {5}, {5, 5}, {0, 14999}, {0, 1, 14999}, {0, 63, 126, 14999}};
  lists.emplace_back(100000, 700.0);
  lists.emplace_back();
  for (int i = 0; i < 15000; ++i) lists.back().push_back(i);
  RandomGenerator random(1, RandomGenerator::Purpose::HeartBeats);
  for (int n = 0; n < 50; ++n) {
    lists.emplace_back();
    for (int i = 0; i < n * n; ++i) lists.back().push_back(random.uniform(-1000, 16000));
  }
  for (const std::vector<double>& list : lists) {
    const std::vector<double> positions = usable(list).positions;
    EXPECT_LE(positions.size(), 240u);
    for (size_t i = 1; i < positions.size(); ++i) EXPECT_GE(positions[i] - positions[i - 1], 62);
    for (const double position : positions) EXPECT_TRUE(position >= 0 && position < length);
  }
}

TEST(KnownPulses, ThePeriodIsTheMedianInterval) {
  const HeartPeriod heart = periodOfPulses({0, 200, 410, 1000, 1205});
  EXPECT_EQ(heart.period, 210);
  EXPECT_EQ(heart.shortest, 148);
  EXPECT_EQ(heart.longest, 297);
  EXPECT_EQ(periodOfPulses({}).period, 0);
  EXPECT_EQ(periodOfPulses({7}).period, 0);
}

} // namespace emeg
