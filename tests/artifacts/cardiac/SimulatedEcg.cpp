#include "tests/artifacts/cardiac/SimulatedEcg.h"

#include "app/simulation/HeartBeats.h"
#include "app/simulation/RandomGenerator.h"
#include "artifacts/cardiac/known/RPeaks.h"
#include "artifacts/cardiac/series/ZeroPhaseBand.h"
#include "tests/artifacts/cardiac/SimulatedBcg.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double tolerance = 0.06; // seconds
constexpr double sliceHz = 13.33;
constexpr double modulationHz = 0.027; // of what is left of the gradient artifact
constexpr double modulation = 0.3;
constexpr double dropoutSeconds = 4;
constexpr double spikeUv = 20000;

void addNoise(double rms, RandomGenerator& random, SimulatedEcg& ecg) {
  std::vector<double> noise(ecg.samples.size());
  for (double& value : noise) value = random.normal();
  noise = bandOf(noise, ecg.rate, 1, 35);
  double squares = 0;
  for (const double value : noise) squares += value * value;
  const double scale = rms / std::sqrt(squares / static_cast<double>(noise.size()));
  for (size_t i = 0; i < noise.size(); ++i) ecg.samples[i] += scale * noise[i];
}

void addResidue(double amplitude, SimulatedEcg& ecg) {
  for (size_t i = 0; i < ecg.samples.size(); ++i) {
    const double phase = 2 * std::numbers::pi * static_cast<double>(i) / ecg.rate;
    const double size = amplitude * (1 + modulation * std::sin(modulationHz * phase));
    ecg.samples[i] += size * (std::sin(sliceHz * phase) + 0.5 * std::sin(2 * sliceHz * phase + 1));
  }
}

void addDropouts(int count, SimulatedEcg& ecg) {
  const auto length = static_cast<size_t>(dropoutSeconds * ecg.rate);
  for (int k = 0; k < count; ++k) {
    const size_t from = static_cast<size_t>(k + 1) * ecg.samples.size() / static_cast<size_t>(count + 1);
    std::fill_n(ecg.samples.begin() + static_cast<std::ptrdiff_t>(from), length, 0.0);
  }
}

void addSpikes(int count, RandomGenerator& random, SimulatedEcg& ecg) {
  for (int k = 0; k < count; ++k) {
    const auto at = static_cast<size_t>(random.uniform(0.02, 0.98) * static_cast<double>(ecg.samples.size()));
    for (size_t j = 0; j < 5; ++j) ecg.samples[at + j] += spikeUv * (1 - static_cast<double>(j) / 5);
  }
}

} // namespace

const std::vector<EcgCase>& ecgCases() {
  static const std::vector<EcgCase> cases = {
      {.name = "quiet"},
      {.name = "40 beats per minute", .beatsPerMinute = 40},
      {.name = "110 beats per minute", .beatsPerMinute = 110},
      {.name = "RMSSD 5 ms", .rmssd = 0.005},
      {.name = "RMSSD 100 ms", .rmssd = 0.1},
      {.name = "T wave 1.5 times R", .tWave = 1.5},
      {.name = "T wave 2.5 times R", .tWave = 2.5},
      {.name = "inverted", .rPeakUv = -1000},
      {.name = "inverted, T wave 1.5 times R", .tWave = 1.5, .rPeakUv = -1000},
      {.name = "5 % ectopic beats", .ectopicShare = 0.05},
      {.name = "10 % ectopic beats", .ectopicShare = 0.1},
      {.name = "noise, a tenth of R", .noiseUv = 100},
      {.name = "noise, 0.15 of R", .noiseUv = 150},
      {.name = "noise, a fifth of R", .noiseUv = 200},
      {.name = "gradient residue, a fifth of R", .residueUv = 200},
      {.name = "gradient residue, half of R", .residueUv = 500},
      {.name = "gradient residue as high as R", .residueUv = 1000},
      {.name = "residue half of R, RMSSD 5 ms", .rmssd = 0.005, .residueUv = 500},
      {.name = "residue 0.3 of R, T wave 1.5", .tWave = 1.5, .residueUv = 300},
      {.name = "three dropouts", .nrOfDropouts = 3},
      {.name = "20 spikes", .nrOfSpikes = 20},
      {.name = "5 movements, 3 mV", .movementUv = 3000}};
  return cases;
}

SimulatedEcg simulateEcg(const EcgCase& ecgCase, uint64_t seed) {
  SimulationParameters parameters = healthyHeart(ecgCase.beatsPerMinute, seed);
  parameters.nrOfChannels = 2;
  parameters.heart->rmssd = ecgCase.rmssd;
  parameters.heart->ectopicShare = ecgCase.ectopicShare;
  parameters.ecg = EcgParameters{ecgCase.rPeakUv, ecgCase.tWave};
  if (ecgCase.movementUv > 0) parameters.movement = MovementParameters{.peakUv = ecgCase.movementUv};
  SimulatedBcg recording = simulateBcg(parameters);

  SimulatedEcg ecg;
  ecg.samples = std::move(recording.series.back());
  ecg.samples.resize(static_cast<size_t>(recording.length));
  ecg.rate = static_cast<double>(recording.rate);
  for (const double time : HeartBeats::draw(*parameters.heart, seed, parameters.seconds).times)
    if (time >= 0 && time < parameters.seconds) ecg.beats.push_back(time);

  RandomGenerator random(seed, RandomGenerator::Purpose::Disturbances);
  if (ecgCase.noiseUv > 0) addNoise(ecgCase.noiseUv, random, ecg);
  if (ecgCase.residueUv > 0) addResidue(ecgCase.residueUv, ecg);
  addDropouts(ecgCase.nrOfDropouts, ecg);
  addSpikes(ecgCase.nrOfSpikes, random, ecg);
  return ecg;
}

BeatAgreement foundRPeaks(const EcgCase& ecgCase, uint64_t seed) {
  const SimulatedEcg ecg = simulateEcg(ecgCase, seed);
  std::vector<double> found = findRPeaks(ecg.samples, ecg.rate);
  for (double& position : found) position /= ecg.rate;
  return compareBeats(ecg.beats, found, tolerance);
}

} // namespace emeg
