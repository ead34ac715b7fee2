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

double firstOnset(const GradientParameters& gradient) {
  return gradient.cutBefore > 0 ? -gradient.cutBefore : gradient.quietBefore;
}

std::vector<ScanTiming> timingsOf(const SimulationParameters& parameters) {
  const GradientParameters& gradient = *parameters.gradient;
  RandomGenerator random(parameters.seed, Purpose::ScanOnset);
  std::vector<ScanTiming> timings;
  double begin = firstOnset(gradient);
  for (int scan = 0; scan < gradient.nrOfScans; scan++) {
    ScanTiming timing;
    timing.nrOfVolumes = gradient.nrOfVolumes.value_or(nrOfVolumesThatFit(gradient, parameters.seconds));
    timing.nrOfSlicesPerVolume = gradient.nrOfSlicesPerVolume;
    timing.volumeDuration = gradient.volumeDuration();
    timing.sliceDuration = gradient.sliceDuration;
    timing.firstVolumeOnset = begin + random.uniform(0, latestOnset);
    begin = timing.end() + gradient.pauseDuration;
    timings.push_back(timing);
  }
  return timings;
}

/// How late every volume of every scan comes.
std::vector<std::vector<double>> delaysOf(const SimulationParameters& parameters,
                                          const std::vector<ScanTiming>& timings) {
  std::vector<std::vector<double>> delays;
  if (parameters.gradient->onsetJitterRms == 0) return delays;
  RandomGenerator random(parameters.seed, Purpose::VolumeJitter);
  for (const ScanTiming& timing : timings) {
    std::vector<double>& ofScan = delays.emplace_back();
    for (int64_t v = 0; v < timing.nrOfVolumes; v++)
      ofScan.push_back(parameters.gradient->onsetJitterRms * random.normal());
  }
  return delays;
}

} // namespace

int64_t nrOfVolumesThatFit(const GradientParameters& gradient, double seconds) {
  const double scans = gradient.nrOfScans;
  const double quietAfter = gradient.endsInScan ? 0 : gradient.quietAfter;
  const double room = seconds - firstOnset(gradient) - quietAfter - latestOnset -
                      (scans - 1) * (gradient.pauseDuration + latestOnset);
  double count = std::floor(room / scans / gradient.volumeDuration());
  if (gradient.endsInScan) count += 2;
  if (!(count >= 1)) return 0; // also when a parameter is not a number
  return static_cast<int64_t>(std::min(count, largestCount));
}

double leastEndOfScans(const GradientParameters& gradient, int64_t nrOfVolumes) {
  return firstOnset(gradient) +
         gradient.nrOfScans * static_cast<double>(nrOfVolumes) * gradient.volumeDuration() +
         (gradient.nrOfScans - 1) * gradient.pauseDuration;
}

GradientArtifact::GradientArtifact(const SimulationParameters& parameters)
    : timings_(timingsOf(parameters)), delays_(delaysOf(parameters, timings_)),
      waveform_(*parameters.gradient, parameters.samplingFrequency),
      secondBurstDelay_(parameters.gradient->secondBurstDelay),
      secondBurstFactor_(parameters.gradient->secondBurstFactor),
      activeDuration_(parameters.gradient->secondBurstDelay + parameters.gradient->burstDuration),
      drift_(RandomGenerator(parameters.seed, Purpose::Drift), parameters.gradient->driftRms,
             timings_.front().firstVolumeOnset, timings_.back().end() - timings_.front().firstVolumeOnset) {
  for (int c = 0; c < parameters.nrOfChannels; c++) {
    RandomGenerator random(parameters.seed, Purpose::GradientGain, static_cast<uint64_t>(c));
    const double size = random.uniform(smallestGain, largestGain);
    const double gain = size * random.sign();
    gains_.push_back(parameters.isDead(c) ? 0 : gain);
  }
}

double GradientArtifact::delayOf(size_t scan, int64_t volume) const {
  return delays_.empty() ? 0 : delays_[scan][static_cast<size_t>(volume)];
}

double GradientArtifact::volumeOnset(size_t scan, int64_t volume) const {
  return timings_[scan].volumeOnset(volume) + delayOf(scan, volume);
}

double GradientArtifact::value(double time) const {
  double sum = 0;
  for (size_t scan = 0; scan < timings_.size(); scan++) sum += valueInScan(scan, time);
  return sum == 0 ? 0 : sum * drift_.factor(time);
}

/// A volume that comes early or late, or a burst that is longer than its slice, reaches into its neighbours.
double GradientArtifact::valueInScan(size_t scan, double time) const {
  const ScanTiming& timing = timings_[scan];
  const double volumesSince = (time - timing.firstVolumeOnset) / timing.volumeDuration;
  if (volumesSince < -1 || volumesSince > static_cast<double>(timing.nrOfVolumes + 1)) return 0;
  const auto volume = static_cast<int64_t>(std::floor(volumesSince));
  const int64_t reach = delays_.empty() ? 0 : 1;
  double sum = 0;
  for (int64_t v = std::max<int64_t>(volume - 1, 0); v <= std::min(volume + reach, timing.nrOfVolumes - 1);
       v++) {
    const double delay = delayOf(scan, v);
    const double inVolume = time - timing.volumeOnset(v) - delay;
    const auto slice = std::min(static_cast<int64_t>(std::floor(inVolume / timing.sliceDuration)),
                                static_cast<int64_t>(timing.nrOfSlicesPerVolume - 1));
    for (int64_t s = slice; s >= 0; s--) {
      const double inSlice = time - timing.sliceOnset(v, static_cast<int>(s)) - delay;
      if (inSlice > activeDuration_) break;
      const auto kind = s == 0 ? BurstWaveform::Slice::First : BurstWaveform::Slice::Ordinary;
      sum += waveform_.value(kind, inSlice);
      if (secondBurstDelay_ > 0)
        sum += secondBurstFactor_ * waveform_.value(kind, inSlice - secondBurstDelay_);
    }
  }
  return sum;
}

} // namespace emeg
