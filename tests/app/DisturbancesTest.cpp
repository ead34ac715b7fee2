#include "app/simulation/Disturbances.h"
#include "app/simulation/Simulation.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace emeg {

namespace {

constexpr double fs = 2000;

SimulationParameters bothArtifacts() {
  SimulationParameters parameters = presetParameters(Preset::Both, fs);
  parameters.seconds = 20;
  parameters.nrOfChannels = 3;
  return parameters;
}

/// Everything that is recorded, channel after channel.
std::vector<double> recordedIn(const SimulationParameters& parameters, int64_t blockLength = 100000) {
  EXPECT_EQ(problemWith(parameters), "");
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

/// The second of a sample in recordedIn.
double timeOf(size_t index, const SimulationParameters& parameters) {
  return static_cast<double>(static_cast<int64_t>(index) % parameters.nrOfTimePoints()) / fs;
}

} // namespace

TEST(Disturbances, SpikesDecayWithinMillisecondsInAllChannels) {
  SimulationParameters parameters = bothArtifacts();
  const std::vector<double> without = recordedIn(parameters);
  parameters.disturbances.nrOfSpikes = 4;
  parameters.disturbances.spikeUv = 8000;
  const std::vector<double> with = recordedIn(parameters);
  const std::vector<double> times = Simulation(parameters).disturbances().spikeTimes();
  ASSERT_EQ(times.size(), 4u);
  size_t nrOfChanged = 0;
  for (size_t i = 0; i < with.size(); i++) {
    double expected = 0;
    for (const double time : times) {
      const double since = timeOf(i, parameters) - time;
      if (since >= 0 && since < 0.01) expected += 8000 * std::exp(-since / 0.001);
    }
    ASSERT_NEAR(with[i] - without[i], expected, 1e-6) << i;
    if (expected > 1000) nrOfChanged++;
  }
  EXPECT_GE(nrOfChanged, 4u * 3u * 3u); // at 2 kHz a spike exceeds an eighth of its peak in four samples
}

TEST(Disturbances, LieAwayFromTheRecordingsEnds) {
  SimulationParameters parameters = bothArtifacts();
  parameters.disturbances.nrOfSpikes = 500;
  parameters.disturbances.nrOfDropouts = 500;
  const Disturbances disturbances(parameters);
  for (const std::vector<double>& times : {disturbances.spikeTimes(), disturbances.dropoutTimes()}) {
    ASSERT_EQ(times.size(), 500u);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
    EXPECT_GE(times.front(), 1);
    EXPECT_LT(times.back(), 19);
    EXPECT_GT(times.back() - times.front(), 15);
  }
}

TEST(Disturbances, ARecordingThatDropsOutIsZeroInEveryPart) {
  SimulationParameters parameters = bothArtifacts();
  parameters.lineNoise.frequencyHz = 50;
  const std::vector<double> without = recordedIn(parameters);
  parameters.disturbances.nrOfDropouts = 3;
  parameters.disturbances.dropoutDuration = 0.4;
  const std::vector<double> with = recordedIn(parameters);
  Simulation simulation(parameters);
  const std::vector<double> times = simulation.disturbances().dropoutTimes();
  ASSERT_EQ(times.size(), 3u);
  const auto isOut = [&](double t) {
    return std::any_of(times.begin(), times.end(), [&](double time) { return t >= time && t < time + 0.4; });
  };
  size_t nrOfZeros = 0;
  for (size_t i = 0; i < with.size(); i++) {
    if (isOut(timeOf(i, parameters))) nrOfZeros++;
    ASSERT_EQ(with[i], isOut(timeOf(i, parameters)) ? 0 : without[i]) << i;
  }
  EXPECT_GE(nrOfZeros, 3u * 799u);
  SimulatedBlock block;
  ASSERT_TRUE(simulation.next(parameters.nrOfTimePoints(), block));
  for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
    if (!isOut(static_cast<double>(t) / fs)) continue;
    ASSERT_EQ(block.clean[block.indexOf(1, t)], 0);
    ASSERT_EQ(block.pulse[block.indexOf(1, t)], 0);
    ASSERT_EQ(block.gradient(1, t), 0);
  }
}

TEST(Disturbances, DropoutsMayOverlap) {
  SimulationParameters parameters = bothArtifacts();
  parameters.disturbances.nrOfDropouts = 60;
  const Disturbances disturbances(parameters);
  int nrOfOut = 0;
  for (double t = 0; t < 20; t += 0.0013) {
    const bool expected = std::any_of(disturbances.dropoutTimes().begin(), disturbances.dropoutTimes().end(),
                                      [&](double time) { return t >= time && t < time + 0.3; });
    ASSERT_EQ(disturbances.isDroppedOut(t), expected) << t;
    if (expected) nrOfOut++;
  }
  EXPECT_GT(nrOfOut, 3000);
  EXPECT_LT(nrOfOut, 15000);
}

TEST(Disturbances, AnAmplifierThatIsTooSmallCutsOffWhatIsLarger) {
  SimulationParameters parameters = bothArtifacts();
  const std::vector<double> without = recordedIn(parameters);
  parameters.disturbances.clipUv = 700;
  const std::vector<double> with = recordedIn(parameters);
  size_t nrOfCut = 0;
  for (size_t i = 0; i < with.size(); i++) {
    ASSERT_EQ(with[i], std::clamp(without[i], -700.0, 700.0)) << i;
    if (std::fabs(with[i]) == 700) nrOfCut++;
  }
  EXPECT_GT(nrOfCut, with.size() / 100);
  EXPECT_LT(nrOfCut, with.size() / 2);
}

TEST(Disturbances, BlockLengthsDoNotShow) {
  SimulationParameters parameters = bothArtifacts();
  parameters.disturbances.nrOfSpikes = 5;
  parameters.disturbances.nrOfDropouts = 2;
  parameters.disturbances.clipUv = 1000;
  EXPECT_EQ(recordedIn(parameters, 777), recordedIn(parameters));
}

TEST(Disturbances, DeadChannelsStayDead) {
  SimulationParameters parameters = bothArtifacts();
  parameters.disturbances.nrOfSpikes = 5;
  parameters.deadChannels = {1};
  const std::vector<double> samples = recordedIn(parameters);
  const auto total = static_cast<size_t>(parameters.nrOfTimePoints());
  for (size_t i = total; i < 2 * total; i++) ASSERT_EQ(samples[i], 0) << i;
}

} // namespace emeg
