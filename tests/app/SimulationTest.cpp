#include "app/simulation/Simulation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace emeg {

namespace {

SimulationParameters shortRecording(Preset preset) {
  SimulationParameters parameters = presetParameters(preset, 2000);
  parameters.seconds = 12;
  parameters.nrOfChannels = 3;
  return parameters;
}

/// Everything that is recorded, channel after channel.
std::vector<double> recordedIn(const SimulationParameters& parameters, int64_t blockLength) {
  Simulation simulation(parameters);
  const int64_t total = parameters.nrOfTimePoints();
  std::vector<double> samples(static_cast<size_t>(parameters.nrOfChannels * total));
  SimulatedBlock block;
  while (simulation.next(blockLength, block))
    for (int c = 0; c < parameters.nrOfChannels; c++)
      for (int64_t t = 0; t < block.nrOfTimePoints; t++)
        samples[static_cast<size_t>(c * total + block.firstTimePoint + t)] = block.recorded(c, t);
  return samples;
}

TEST(Simulation, BlockLengthsDoNotShowInTheSamples) {
  SimulationParameters parameters = shortRecording(Preset::Both);
  parameters.lineNoise.frequencyHz = 50;
  const std::vector<double> whole = recordedIn(parameters, 1000000);
  EXPECT_EQ(recordedIn(parameters, 1000), whole);
  EXPECT_EQ(recordedIn(parameters, 777), whole);
}

// Values of one build, kept so that every other build, compiler and machine is held to them.
TEST(Simulation, GivesTheSameValuesOnEveryMachine) {
  const std::vector<double> samples = recordedIn(shortRecording(Preset::Both), 100000);
  const std::vector<std::pair<size_t, double>> known = {{0, 32.191251674385214},
                                                        {7003, 10.079959027271096},
                                                        {24000 + 12345, -1630.9229795302761},
                                                        {48000 + 23999, 15.916767905833334}};
  for (const auto& [index, value] : known)
    EXPECT_NEAR(samples[index], value, 1e-9 * std::abs(value)) << index;
}

TEST(Simulation, MoreChannelsLeaveTheFirstOnesAsTheyWere) {
  SimulationParameters parameters = shortRecording(Preset::Both);
  const std::vector<double> three = recordedIn(parameters, 100000);
  parameters.nrOfChannels = 5;
  std::vector<double> five = recordedIn(parameters, 100000);
  five.resize(three.size());
  EXPECT_EQ(five, three);
}

TEST(Simulation, ADifferentSeedGivesADifferentRecording) {
  SimulationParameters parameters = shortRecording(Preset::Both);
  const std::vector<double> first = recordedIn(parameters, 100000);
  parameters.seed = 2;
  EXPECT_NE(recordedIn(parameters, 100000), first);
}

TEST(Simulation, IsTheSumOfItsParts) {
  const SimulationParameters parameters = shortRecording(Preset::Both);
  Simulation simulation(parameters);
  SimulatedBlock block;
  ASSERT_TRUE(simulation.next(parameters.nrOfTimePoints(), block));
  EXPECT_FALSE(simulation.next(1, block));
  double largestBurst = 0;
  for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
    const double time = static_cast<double>(t) / 2000;
    ASSERT_EQ(block.bursts[static_cast<size_t>(t)], simulation.gradient()->value(time));
    ASSERT_EQ(block.recorded(1, t),
              block.clean[block.indexOf(1, t)] + block.gradient(1, t) + block.pulse[block.indexOf(1, t)]);
    largestBurst = std::max(largestBurst, std::abs(block.gradient(1, t)));
  }
  EXPECT_NEAR(largestBurst, 2500 * std::abs(simulation.gradient()->gain(1)), 0.25 * largestBurst);
}

TEST(Simulation, PresetsHoldWhatTheirNamesSay) {
  EXPECT_NE(Simulation(shortRecording(Preset::Gap)).gradient(), nullptr);
  EXPECT_EQ(Simulation(shortRecording(Preset::Gap)).pulse(), nullptr);
  EXPECT_NE(Simulation(shortRecording(Preset::Continuous)).gradient(), nullptr);
  EXPECT_EQ(Simulation(shortRecording(Preset::Bcg)).gradient(), nullptr);
  EXPECT_NE(Simulation(shortRecording(Preset::Bcg)).pulse(), nullptr);
  EXPECT_NE(Simulation(shortRecording(Preset::Both)).gradient(), nullptr);
  EXPECT_NE(Simulation(shortRecording(Preset::Both)).pulse(), nullptr);
}

TEST(Simulation, DeadChannelsAreZeroThroughoutAndLeaveTheOthersAsTheyWere) {
  SimulationParameters parameters = shortRecording(Preset::Both);
  parameters.lineNoise.frequencyHz = 50;
  const std::vector<double> alive = recordedIn(parameters, 100000);
  parameters.deadChannels = {1};
  const std::vector<double> samples = recordedIn(parameters, 1000);
  const auto total = static_cast<size_t>(parameters.nrOfTimePoints());
  for (size_t i = 0; i < samples.size(); i++) ASSERT_EQ(samples[i], i / total == 1 ? 0 : alive[i]) << i;
  const Simulation simulation(parameters);
  EXPECT_EQ(simulation.gradient()->gain(1), 0);
  EXPECT_EQ(simulation.pulse()->peak(1), 0);
  EXPECT_GT(simulation.pulse()->peak(2), 0);
}

TEST(Simulation, LineNoiseIsASinusoidOfItsAmplitude) {
  SimulationParameters parameters = shortRecording(Preset::Bcg);
  const std::vector<double> without = recordedIn(parameters, 100000);
  parameters.lineNoise.frequencyHz = 50;
  parameters.lineNoise.amplitudeUv = 8;
  const std::vector<double> with = recordedIn(parameters, 100000);
  const Simulation simulation(parameters);
  const int64_t total = parameters.nrOfTimePoints();
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    const double phase = simulation.lineNoise().phases()[static_cast<size_t>(c)];
    for (int64_t t = 0; t < total; t += 7) {
      const auto index = static_cast<size_t>(c * total + t);
      const double expected = 8 * std::sin(2 * std::numbers::pi * 50 * static_cast<double>(t) / 2000 + phase);
      ASSERT_NEAR(with[index] - without[index], expected, 1e-9);
    }
  }
}

} // namespace

} // namespace emeg
