#include "app/simulation/GradientArtifact.h"

#include "app/simulation/RandomGenerator.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

using Purpose = RandomGenerator::Purpose;

/// The scan begins up to this many seconds after the quiet stretch, off the raster of the samples.
constexpr double latestOnset = 0.01;
/// No recording holds as many; keeps the count an integer whatever the parameters are.
constexpr double largestCount = 1e9;
constexpr double smallestGain = 0.6;
constexpr double largestGain = 1.2;

ScanTiming timingOf(const SimulationParameters& parameters) {
  const GradientParameters& gradient = *parameters.gradient;
  RandomGenerator random(parameters.seed, Purpose::ScanOnset);
  ScanTiming timing;
  timing.nrOfVolumes = gradient.nrOfVolumes.value_or(nrOfVolumesThatFit(gradient, parameters.seconds));
  timing.nrOfSlicesPerVolume = gradient.nrOfSlicesPerVolume;
  timing.volumeDuration = gradient.volumeDuration();
  timing.sliceDuration = gradient.sliceDuration;
  timing.firstVolumeOnset = gradient.quietBefore + random.uniform(0, latestOnset);
  return timing;
}

} // namespace

int64_t nrOfVolumesThatFit(const GradientParameters& gradient, double seconds) {
  const double room = seconds - gradient.quietBefore - gradient.quietAfter - latestOnset;
  const double count = std::floor(room / gradient.volumeDuration());
  if (!(count >= 1)) return 0; // also when a parameter is not a number
  return static_cast<int64_t>(std::min(count, largestCount));
}

GradientArtifact::GradientArtifact(const SimulationParameters& parameters)
    : timing_(timingOf(parameters)), waveform_(*parameters.gradient, parameters.samplingFrequency),
      drift_(RandomGenerator(parameters.seed, Purpose::Drift), parameters.gradient->driftRms,
             timing_.firstVolumeOnset, timing_.end() - timing_.firstVolumeOnset) {
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RandomGenerator random(parameters.seed, Purpose::GradientGain, static_cast<uint64_t>(c));
    const double size = random.uniform(smallestGain, largestGain);
    const double gain = size * random.sign();
    gains_.push_back(parameters.isDead(c) ? 0 : gain);
  }
}

double GradientArtifact::value(double time) const {
  const double sinceStart = time - timing_.firstVolumeOnset;
  if (sinceStart < 0) return 0;
  const auto volume = static_cast<int64_t>(sinceStart / timing_.volumeDuration);
  if (volume >= timing_.nrOfVolumes) return 0;
  const double inVolume = time - timing_.volumeOnset(volume);
  const int slice = static_cast<int>(inVolume / timing_.sliceDuration);
  if (slice >= timing_.nrOfSlicesPerVolume) return 0;
  const double inSlice = time - timing_.sliceOnset(volume, slice);
  const auto kind = slice == 0 ? BurstWaveform::Slice::First : BurstWaveform::Slice::Ordinary;
  const double burst = waveform_.value(kind, inSlice);
  return burst == 0 ? 0 : burst * drift_.factor(time);
}

} // namespace emeg
