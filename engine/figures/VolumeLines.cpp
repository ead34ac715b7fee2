#include "engine/figures/VolumeLines.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <utility>

namespace emeg {

namespace {

/// Powers of a waveform's harmonics; the cosines of a turn are computed once.
class Harmonics {
public:
  explicit Harmonics(std::vector<double> waveform) : waveform_(std::move(waveform)) {
    const double step = 2 * std::numbers::pi / static_cast<double>(waveform_.size());
    for (size_t i = 0; i < waveform_.size(); ++i) {
      const double angle = step * static_cast<double>(i);
      turn_.push_back({std::cos(angle), std::sin(angle)});
    }
  }

  /// Mean square of the sinusoid with `harmonic` periods (fewer than there are values) in the waveform.
  double powerOf(int64_t harmonic) const {
    const size_t n = waveform_.size();
    const auto step = static_cast<size_t>(harmonic);
    double re = 0;
    double im = 0;
    size_t at = 0;
    for (size_t i = 0; i < n; ++i) {
      re += waveform_[i] * turn_[at].cosine;
      im -= waveform_[i] * turn_[at].sine;
      at += step;
      if (at >= n) at -= n;
    }
    const auto length = static_cast<double>(n);
    return 2 * (re * re + im * im) / (length * length);
  }

private:
  struct Direction {
    double cosine, sine;
  };
  std::vector<double> waveform_;
  std::vector<Direction> turn_;
};

/// Which multiple of the slice frequency a multiple of the volume frequency belongs to; 0: to none.
int64_t sliceHarmonicAt(int64_t harmonic, const MRSequence& sequence) {
  // In data with pauses between volumes the slices' lines are spread over neighbours.
  const double slicesPerVolume = sequence.volumeDuration / sequence.sliceDuration;
  if (!(slicesPerVolume >= 0.5) || !std::isfinite(slicesPerVolume)) return 0; // no slices are known
  const double multiple = std::floor(static_cast<double>(harmonic) / slicesPerVolume + 0.5);
  const bool isNear = std::abs(static_cast<double>(harmonic) - multiple * slicesPerVolume) <= 1;
  return isNear ? static_cast<int64_t>(multiple) : 0;
}

std::vector<double> withoutMean(std::span<const double> values) {
  double mean = 0;
  for (const double value : values) mean += value / static_cast<double>(values.size());
  std::vector<double> result;
  result.reserve(values.size());
  for (const double value : values) result.push_back(value - mean);
  return result;
}

} // namespace

VolumeLockedPart volumeLinesOf(std::vector<double> pairAverage, const MRSequence& sequence,
                               const FrequencyRange& range) {
  const auto nrOfPhases = static_cast<int64_t>(pairAverage.size());
  const Harmonics average(std::move(pairAverage));
  const auto multipleOf = [&](double hz) {
    return std::clamp(hz * sequence.volumeDuration, 0.0, static_cast<double>(nrOfPhases));
  };
  const auto first = std::max(static_cast<int64_t>(std::ceil(multipleOf(range.lowest))), int64_t{1});
  const auto last =
      std::min(static_cast<int64_t>(std::floor(multipleOf(range.highest))), (nrOfPhases - 2) / 4);
  double slices = 0;
  double others = 0;
  double background = 0;
  struct Group {
    double lines = 0, background = 0;
  };
  std::map<int64_t, Group> groups; // per multiple of the slice frequency
  for (int64_t harmonic = first; harmonic <= last; ++harmonic) {
    const double line = average.powerOf(2 * harmonic);
    const double beside = 0.5 * (average.powerOf(2 * harmonic - 1) + average.powerOf(2 * harmonic + 1));
    background += beside;
    const int64_t multiple = sliceHarmonicAt(harmonic, sequence);
    (multiple > 0 ? slices : others) += line;
    if (multiple == 0) continue;
    groups[multiple].lines += line;
    groups[multiple].background += beside;
  }
  VolumeLockedPart part;
  part.sliceHarmonics = std::sqrt(slices);
  part.volumeHarmonics = std::sqrt(others);
  part.background = std::sqrt(background);
  part.lineToBackground = background > 0 ? (slices + others) / background : 0;
  std::vector<double> ratios;
  ratios.reserve(groups.size());
  for (const auto& [multiple, group] : groups)
    ratios.push_back(group.background > 0 ? group.lines / group.background : 0);
  part.medianSliceToBackground = median(ratios);
  return part;
}

double lagBetween(std::span<const double> earlier, std::span<const double> later, int64_t longestLag) {
  const auto n = static_cast<int64_t>(earlier.size());
  if (n == 0) return 0;
  longestLag = std::min(longestLag, n);
  const std::vector<double> fixed = withoutMean(earlier);
  const std::vector<double> period = withoutMean(later);
  // The period with what comes before and behind it, as far as the longest lags and their neighbours reach.
  const int64_t margin = longestLag + 1;
  std::vector<double> moved;
  moved.reserve(static_cast<size_t>(n + 2 * margin));
  for (int64_t i = -margin; i < n + margin; ++i)
    moved.push_back(period[static_cast<size_t>((i % n + n) % n)]);
  const auto likeness = [&](int64_t lag) {
    const double* const from = moved.data() + margin + lag;
    double sum = 0;
    for (size_t i = 0; i < fixed.size(); ++i) sum += fixed[i] * from[i];
    return sum;
  };
  int64_t best = 0;
  double highest = likeness(0);
  for (int64_t lag = -longestLag; lag <= longestLag; ++lag) {
    const double value = likeness(lag);
    if (value <= highest) continue;
    highest = value;
    best = lag;
  }
  const double before = likeness(best - 1);
  const double after = likeness(best + 1);
  const double curvature = before - 2 * highest + after;
  return static_cast<double>(best) + (curvature < 0 ? 0.5 * (before - after) / curvature : 0);
}

} // namespace emeg
