#include "artifacts/gradient/timing/volumes/VolumeOnset.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace emeg {

namespace {

constexpr double sameSlice = 1.5; // slices; a volume that seems to begin that much earlier or later does not
constexpr double fade = 1.0 / 3;  // of a slice
constexpr double earliest = -0.1; // of a slice; activity of the first slice must not come before the cut
constexpr double latest = 0.2;
constexpr double worthMoving = 0.002; // of a slice's power

/// Between -period / 2 and period / 2.
double wrapped(double distance, double period) {
  return distance - std::round(distance / period) * period;
}

double rampAt(double u) {
  return ((6 * u - 15) * u + 10) * u * u * u;
}

/// Power that is left where the scan begins and ends when volumes are cut `late` samples behind `first`,
/// where the first slice's activity begins. What comes before `first` is the last slice's end: the last
/// template fades out over it, and the first one fades in where in front of the scan there is nothing. What
/// comes behind is the first slice's begin, for which it is the other way round.
double costOfCut(const std::vector<double>& power, int64_t first, int64_t late, int64_t ramp) {
  double cost = 0;
  for (int64_t x = 0; x < ramp; ++x) {
    const int64_t at = first + late - x;
    const double kept = rampAt(static_cast<double>(x) / static_cast<double>(ramp));
    const double left = at < first ? 1 - kept : kept;
    cost += 2 * left * left * power[static_cast<size_t>(at)];
  }
  return cost;
}

} // namespace

double volumeOnset(std::span<const double> twoVolumes, const RepeatLine& line, const SliceStructure& slices,
                   std::optional<double> begin) {
  double onset = line.onset + slices.onset;
  if (begin) {
    const double distance = wrapped(onset + slices.firstActivity - *begin, line.period);
    const bool isFirst =
        !slices.isOnsetCertain || std::fabs(distance) < slices.onsetSlack + sameSlice * slices.sliceDuration;
    onset = *begin + (isFirst ? 0 : std::round(distance / slices.sliceDuration) * slices.sliceDuration);
  }

  // The power around the onset, from the circular average.
  const auto ramp = static_cast<int64_t>(fade * slices.sliceDuration);
  const auto reach = static_cast<int64_t>(slices.sliceDuration);
  const auto length = static_cast<int64_t>(line.period);
  if (ramp < 2 || reach >= length) return onset;
  const double inVolume = onset - line.onset - std::floor((onset - line.onset) / line.period) * line.period;
  const auto at = static_cast<int64_t>(inVolume) + length - reach;
  std::vector<double> power;
  double total = 0;
  for (int64_t i = 0; i < 2 * reach; ++i) {
    const double value = twoVolumes[static_cast<size_t>((at + i) % length)];
    power.push_back(value * value);
    total += value * value / 2;
  }
  int64_t best = 0;
  double least = costOfCut(power, reach, 0, ramp);
  double bound = least - worthMoving * total;
  for (auto late = static_cast<int64_t>(earliest * slices.sliceDuration);
       late <= static_cast<int64_t>(latest * slices.sliceDuration); ++late) {
    const double cost = costOfCut(power, reach, late, ramp);
    if (cost < std::min(bound, least)) {
      least = cost;
      best = late;
    }
  }
  return onset + static_cast<double>(best);
}

} // namespace emeg
