#include "artifacts/gradient/timing/volumes/CircularVolume.h"

#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <algorithm>
#include <cmath>

namespace emeg {

CircularSums::CircularSums(const std::vector<double>& values) : sums_(2 * values.size() + 1, 0.0) {
  for (size_t i = 0; i < 2 * values.size(); ++i) sums_[i + 1] = sums_[i] + values[i % values.size()];
}

CircularVolume::CircularVolume(std::span<const double> twoVolumes, double volumeDuration,
                               double samplingFrequency)
    : twoVolumes_(twoVolumes), duration_(volumeDuration), fs_(samplingFrequency),
      length_(static_cast<int64_t>(std::floor(volumeDuration))) {
  for (int64_t t = 0; t < length_; ++t) power_ += square(at(t));
}

int64_t CircularVolume::samples(double seconds) const {
  return std::clamp<int64_t>(static_cast<int64_t>(std::floor(seconds * fs_ + 0.5)), 1, length_);
}

std::vector<double> CircularVolume::from(double position, int64_t count) const {
  std::vector<double> values(static_cast<size_t>(count));
  position -= std::floor(position / duration_) * duration_;
  readShifted(twoVolumes_, position, values);
  return values;
}

double CircularVolume::correlation(int64_t lag) const {
  double sum = 0;
  for (int64_t t = 0; t < length_; ++t) sum += at(t) * at(t + lag);
  return power_ > 0 ? sum / power_ : 0;
}

double CircularVolume::correlation(double lag) const {
  const std::vector<double> later = from(lag, length_);
  double sum = 0;
  for (int64_t t = 0; t < length_; ++t) sum += at(t) * later[static_cast<size_t>(t)];
  return power_ > 0 ? sum / power_ : 0;
}

} // namespace emeg
