#include "tests/run/ScannedRecording.h"

#include <cmath>
#include <random>

namespace emeg::test {

double ScannedRecording::residualRms(int channel, const std::vector<double>& signal) const {
  const std::vector<double>& wanted = clean[static_cast<size_t>(channel)];
  double sum = 0;
  for (size_t i = 0; i < wanted.size(); ++i) sum += (signal[i] - wanted[i]) * (signal[i] - wanted[i]);
  return std::sqrt(sum / static_cast<double>(wanted.size()));
}

ScannedRecording scanned(const BurstTrain& train, int nrOfChannels) {
  ScannedRecording made;
  made.train = train;
  made.recording.samplingFrequency = train.samplingFrequency;
  const std::vector<double> artifact = train.artifact();
  for (int c = 0; c < nrOfChannels; ++c) {
    BurstTrain channel = train;
    channel.seed = train.seed + static_cast<uint64_t>(c);
    std::vector<double> clean = channel.noise();
    for (double& sample : clean) sample = std::round(sample);
    std::vector<double> samples = clean;
    const double factor = 1.0 / (1.0 + 0.4 * c);
    for (size_t i = 0; i < samples.size(); ++i) samples[i] += std::round(factor * artifact[i]);
    made.clean.push_back(std::move(clean));
    made.recording.samples.push_back(std::move(samples));
  }
  return made;
}

ScannedRecording scannedWithVolumeGaps() {
  return scanned(BurstTrain::withGaps());
}

ScannedRecording scannedContinuously() {
  return scanned(BurstTrain::continuousWithoutQuiet(23.0));
}

Recording shortNoise(int nrOfChannels, int nrOfTimePoints) {
  std::mt19937 generator(7);
  Recording recording;
  recording.samplingFrequency = 1000;
  recording.samples.resize(static_cast<size_t>(nrOfChannels));
  for (std::vector<double>& channel : recording.samples)
    for (int i = 0; i < nrOfTimePoints; ++i)
      channel.push_back(static_cast<double>(generator() % 401) - 200.0);
  return recording;
}

} // namespace emeg::test
