#include "app/simulation/Electrocardiogram.h"

#include "app/simulation/Simulation.h"
#include "tests/app/SimulatedFiles.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

SimulationParameters withEcg(EcgParameters ecg = {}) {
  SimulationParameters parameters = presetParameters(Preset::Bcg, 1000);
  parameters.seconds = 30;
  parameters.nrOfChannels = 3;
  parameters.ecg = ecg;
  return parameters;
}

/// The electrocardiogram alone, without any EEG.
std::vector<double> ecgOf(const SimulationParameters& parameters, int64_t blockLength = 30000) {
  const HeartBeats beats = HeartBeats::draw(*parameters.heart, parameters.seed, parameters.seconds);
  const Electrocardiogram ecg(parameters, beats);
  std::vector<double> samples(static_cast<size_t>(parameters.nrOfTimePoints()));
  for (int64_t first = 0; first < parameters.nrOfTimePoints(); first += blockLength) {
    const auto count = static_cast<size_t>(std::min(blockLength, parameters.nrOfTimePoints() - first));
    ecg.add(first, std::span(samples).subspan(static_cast<size_t>(first), count));
  }
  return samples;
}

} // namespace

TEST(Electrocardiogram, HasARPeakAtEveryBeatAndATWaveBehindIt) {
  const SimulationParameters parameters = withEcg({.rPeakUv = 800, .tWave = 1.5});
  const std::vector<double> samples = ecgOf(parameters);
  int nrOfBeats = 0;
  for (const double time : HeartBeats::draw(*parameters.heart, parameters.seed, 30).times) {
    if (time < 0.2 || time > 29) continue;
    ++nrOfBeats;
    const auto at = samples.begin() + static_cast<std::ptrdiff_t>(std::llround(time * 1000));
    EXPECT_NEAR(*at, 800, 60);
    EXPECT_LE(std::abs(std::max_element(at - 60, at + 60) - at), 1) << time;
    EXPECT_NEAR(*std::max_element(at + 200, at + 340), 1200, 20);
  }
  EXPECT_GT(nrOfBeats, 25);
}

TEST(Electrocardiogram, EctopicBeatsHaveAWideComplexOfTheOtherSign) {
  SimulationParameters parameters = withEcg();
  parameters.heart->ectopicShare = 0.2;
  const HeartBeats beats = HeartBeats::draw(*parameters.heart, parameters.seed, 30);
  const std::vector<double> samples = ecgOf(parameters);
  int nrOfEctopic = 0;
  for (const size_t i : beats.ectopic) {
    if (beats.times[i] < 1 || beats.times[i] > 29) continue;
    ++nrOfEctopic;
    EXPECT_LT(samples[static_cast<size_t>(std::llround(beats.times[i] * 1000))], -900);
  }
  EXPECT_GT(nrOfEctopic, 2);
}

TEST(Electrocardiogram, BlockLengthsDoNotMatter) {
  const SimulationParameters parameters = withEcg();
  EXPECT_EQ(ecgOf(parameters, 77), ecgOf(parameters));
}

TEST(Electrocardiogram, LeavesTheOtherChannelsAsTheyAre) {
  SimulationParameters parameters = withEcg();
  Simulation with(parameters);
  parameters.ecg.reset();
  Simulation without(parameters);
  SimulatedBlock a, b;
  ASSERT_TRUE(with.next(30000, a));
  ASSERT_TRUE(without.next(30000, b));
  for (int c = 0; c < 2; ++c)
    for (int64_t t = 0; t < 30000; ++t) ASSERT_EQ(a.recorded(c, t), b.recorded(c, t));
  for (int64_t t = 0; t < 30000; ++t)
    ASSERT_EQ(a.pulse[a.indexOf(2, t)], 0) << "no heart beat artifact in it";
}

TEST(Electrocardiogram, IsTheLastChannelOfTheFileAndItsRPeaksAreMarkers) {
  const TestFolder folder;
  const ProgramRun run = runEmeg(
      {"simulate", "bcg", folder / "r.vhdr", "--fs", "500", "--seconds", "20", "--channels", "2", "--ecg"});
  ASSERT_EQ(run.status, 0) << run.err;
  const ProgramRun info = runEmeg({"info", folder / "r.vhdr", "--json"});
  EXPECT_THAT(info.out, HasSubstr("\"ECG\""));
  const nlohmann::json truth = readTruth(folder / "r_truth.json");
  EXPECT_EQ(truth["nrOfChannels"], 3);
  EXPECT_EQ(truth["channelNames"][2], "ECG");
  EXPECT_EQ(truth["heart"]["ecg"]["channel"], 2);
  const std::string markers = bytesOf(folder / "r.vmrk");
  size_t nrOfMarkers = 0;
  for (size_t at = 0; (at = markers.find("Comment,R,", at)) != std::string::npos; ++at) ++nrOfMarkers;
  EXPECT_EQ(nrOfMarkers, truth["heart"]["beatTimes"].size());
}

TEST(Electrocardiogram, NeedsAHeartAndAChannelBesideIt) {
  SimulationParameters parameters = presetParameters(Preset::Gap, 5000);
  parameters.ecg = EcgParameters();
  EXPECT_THAT(problemWith(parameters), HasSubstr("needs a heart"));
  parameters = withEcg();
  parameters.nrOfChannels = 1;
  EXPECT_THAT(problemWith(parameters), HasSubstr("at least one channel"));
  const TestFolder folder;
  EXPECT_EQ(runEmeg({"simulate", "gap", folder / "r.ctc", "--ecg"}).status, 2);
}

} // namespace emeg
