#include "app/simulation/MovementBursts.h"
#include "app/simulation/Simulation.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

namespace {

constexpr double fs = 500;

SimulationParameters moving(uint64_t seed, int64_t nrOfBursts = 6) {
  SimulationParameters parameters = presetParameters(Preset::Bcg, fs);
  parameters.seed = seed;
  parameters.seconds = 60;
  parameters.nrOfChannels = 5;
  parameters.movement = MovementParameters{300, nrOfBursts};
  return parameters;
}

std::vector<double> samplesOf(const SimulationParameters& parameters) {
  const MovementBursts movement(parameters);
  std::vector<double> samples(static_cast<size_t>(parameters.nrOfChannels * parameters.nrOfTimePoints()));
  movement.add(0, parameters.nrOfTimePoints(), samples);
  return samples;
}

TEST(MovementBursts, LastOneToThreeSecondsAndNeverOverlap) {
  for (uint64_t seed = 1; seed <= 20; seed++) {
    const SimulationParameters parameters = moving(seed, 20); // as many as a minute has room for
    const MovementBursts movement(parameters);
    ASSERT_EQ(movement.bursts().size(), 20u);
    double previousEnd = 0;
    for (const MovementBursts::Burst& burst : movement.bursts()) {
      EXPECT_GE(burst.duration, 1);
      EXPECT_LE(burst.duration, 3);
      EXPECT_GE(burst.onset, previousEnd);
      previousEnd = burst.onset + burst.duration;
    }
    EXPECT_LE(previousEnd, parameters.seconds);
  }
}

TEST(MovementBursts, EveryOnePeaksAsGivenInTheLargestChannelAndIsSmallerInTheOthers) {
  const SimulationParameters parameters = moving(2);
  const std::vector<double> samples = samplesOf(parameters);
  const int64_t total = parameters.nrOfTimePoints();
  const MovementBursts movement(parameters);
  double largestPeak = 0;
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    const double channelPeak = std::abs(movement.channelPeaks()[static_cast<size_t>(c)]);
    largestPeak = std::max(largestPeak, channelPeak);
    EXPECT_GE(channelPeak, 0.2 * 300);
    for (const MovementBursts::Burst& burst : movement.bursts()) {
      double largest = 0;
      for (auto t = static_cast<int64_t>(burst.onset * fs);
           t <= static_cast<int64_t>((burst.onset + burst.duration) * fs); t++)
        largest = std::max(largest, std::abs(samples[static_cast<size_t>(c * total + t)]));
      EXPECT_LE(largest, 1.001 * channelPeak);
      EXPECT_GE(largest, 0.99 * channelPeak);
    }
  }
  EXPECT_NEAR(largestPeak, 300, 1e-9);
}

TEST(MovementBursts, AreZeroOutsideAndTheSameWaveformInAllChannels) {
  const SimulationParameters parameters = moving(3);
  const std::vector<double> samples = samplesOf(parameters);
  const int64_t total = parameters.nrOfTimePoints();
  const MovementBursts movement(parameters);
  const double ratio = movement.channelPeaks()[3] / movement.channelPeaks()[0];
  for (int64_t t = 0; t < total; t++) {
    const double time = static_cast<double>(t) / fs;
    const bool inside = std::any_of(movement.bursts().begin(), movement.bursts().end(), [&](const auto& b) {
      return time > b.onset && time < b.onset + b.duration;
    });
    const double value = samples[static_cast<size_t>(t)];
    if (!inside) {
      ASSERT_EQ(value, 0) << time;
    }
    ASSERT_NEAR(samples[static_cast<size_t>(3 * total + t)], ratio * value, 1e-9);
  }
}

TEST(MovementBursts, HoldFrequenciesFromHalfAHertzToEight) {
  // Fourier sums of single bursts, so that the pauses between them do not blur the lines.
  double inside = 0;
  double above = 0;
  for (uint64_t seed = 1; seed <= 5; seed++) {
    const MovementBursts movement(moving(seed));
    for (const MovementBursts::Burst& burst : movement.bursts()) {
      for (double hz = 0.25; hz < 30; hz += 0.25) {
        double cosine = 0;
        double sine = 0;
        for (double time = 0; time < burst.duration; time += 0.004) {
          const double value = burst.value(burst.onset + time);
          cosine += value * std::cos(2 * std::numbers::pi * hz * time);
          sine += value * std::sin(2 * std::numbers::pi * hz * time);
        }
        (hz <= 8 ? inside : above) += cosine * cosine + sine * sine;
      }
    }
  }
  EXPECT_LT(above, 0.05 * inside);
}

TEST(MovementBursts, BelongToTheCleanEegAndLeaveTheHeartAsItWas) {
  SimulationParameters parameters = moving(4);
  SimulatedBlock with;
  ASSERT_TRUE(Simulation(parameters).next(1000000, with));
  const std::vector<double> bursts = samplesOf(parameters);
  parameters.movement.reset();
  SimulatedBlock without;
  ASSERT_TRUE(Simulation(parameters).next(1000000, without));
  EXPECT_EQ(with.pulse, without.pulse);
  for (size_t i = 0; i < bursts.size(); i++) ASSERT_EQ(with.clean[i], without.clean[i] + bursts[i]);
}

TEST(MovementBursts, DoNotDependOnTheBlockLength) {
  const SimulationParameters parameters = moving(5);
  const std::vector<double> whole = samplesOf(parameters);
  const MovementBursts movement(parameters);
  const int64_t total = parameters.nrOfTimePoints();
  for (int64_t first = 0; first < total; first += 777) {
    const int64_t count = std::min<int64_t>(777, total - first);
    std::vector<double> block(static_cast<size_t>(parameters.nrOfChannels * count));
    movement.add(first, count, block);
    for (int c = 0; c < parameters.nrOfChannels; c++)
      for (int64_t t = 0; t < count; t++)
        ASSERT_EQ(block[static_cast<size_t>(c * count + t)],
                  whole[static_cast<size_t>(c * total + first + t)]);
  }
}

TEST(MovementBursts, ThePeakIsThatOfALivingChannel) {
  SimulationParameters parameters = moving(6);
  const MovementBursts all(parameters);
  const auto& peaks = all.channelPeaks();
  const auto largest = std::max_element(peaks.begin(), peaks.end(),
                                        [](double a, double b) { return std::abs(a) < std::abs(b); });
  const auto index = static_cast<size_t>(largest - peaks.begin());
  parameters.deadChannels = {static_cast<int>(index)};
  const MovementBursts others(parameters);
  EXPECT_EQ(others.channelPeaks()[index], 0);
  double largestLiving = 0;
  for (const double peak : others.channelPeaks()) largestLiving = std::max(largestLiving, std::abs(peak));
  EXPECT_NEAR(largestLiving, 300, 1e-9);
}

} // namespace

} // namespace emeg
