#include "artifacts/gradient/timing/WholeVolumes.h"

#include "artifacts/gradient/timing/BandLimitedShift.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr int64_t splineMargin = 2; // samples, so that the spline's last piece is not the volume's

/// Samples that `missing` (a real number) asks for, at most a volume.
int64_t added(double missing, double volume) {
  if (!(missing > 0)) return 0;
  return static_cast<int64_t>(std::ceil(std::min(missing, volume))) + splineMargin;
}

} // namespace

WholeVolumes withWholeVolumes(std::span<const double> channel, const MRSequence& sequence,
                              double samplingFrequency) {
  const double volume = sequence.volumeDuration * samplingFrequency;
  const auto n = static_cast<int64_t>(channel.size());
  WholeVolumes result;
  // Without a second volume there is nothing to take anything from.
  if (!(volume >= 1) || volume > static_cast<double>(n) || sequence.nrOfVolumes < 2) {
    result.samples.assign(channel.begin(), channel.end());
    return result;
  }
  const double begin = sequence.onsetOf(0, 0, samplingFrequency);
  const double end = sequence.onsetOf(sequence.nrOfVolumes, 0, samplingFrequency);
  const int64_t before = added(-begin, volume);
  const int64_t behind = added(end - static_cast<double>(n), volume);
  result.nrOfAddedBefore = before;
  result.samples.resize(static_cast<size_t>(before + n + behind));
  const std::span<double> samples(result.samples);
  std::copy(channel.begin(), channel.end(), samples.begin() + before);
  readShifted(channel, volume - static_cast<double>(before), samples.first(static_cast<size_t>(before)));
  readShifted(channel, static_cast<double>(n) - volume, samples.last(static_cast<size_t>(behind)));
  return result;
}

} // namespace emeg
