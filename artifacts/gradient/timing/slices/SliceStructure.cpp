#include "artifacts/gradient/timing/slices/SliceStructure.h"

#include "artifacts/gradient/timing/slices/FirstSlice.h"
#include "artifacts/gradient/timing/slices/SliceDuration.h"
#include "artifacts/gradient/timing/slices/SliceGaps.h"
#include "artifacts/gradient/timing/volumes/CircularVolume.h"
#include "artifacts/gradient/timing/volumes/Repeats.h"
#include "artifacts/gradient/timing/volumes/SharpenedSignal.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace emeg {

namespace {

constexpr double leastSliceSamples = 4; // fewer are no slice
constexpr double spectralFloor = 0.01;
constexpr double quietShare = 0.02;    // of the mean power
constexpr double activityOver = 0.002; // seconds
constexpr double smallestGap = 0.5;    // of a slice; less is dead time in which no slice fits

void findActivityIn(const CircularVolume& volume, SliceStructure& slices) {
  const std::vector<double> values = volume.from(slices.onset, volume.length());
  const int64_t window = volume.samples(activityOver);
  const double floor = quietShare * volume.meanPower() * static_cast<double>(window);
  std::vector<double> squares(values.size());
  for (size_t t = 0; t < values.size(); ++t) squares[t] = CircularVolume::square(values[t]);
  const CircularSums sums(squares);
  int64_t first = 0, last = volume.length() - window;
  while (first < last && sums.of(first, window) < floor) ++first;
  while (last > first && sums.of(last, window) < floor) --last;
  slices.firstActivity = static_cast<double>(first);
  slices.lastActivity = static_cast<double>(last + window);
}

/// With a gap the volume's length says nothing about the slices' distance: a line through all but the first
/// does.
void alignSlices(const CircularVolume& volume, SliceStructure& slices) {
  if (slices.nrOfSlices < 4) return;
  const std::vector<double> fromOnset = volume.from(slices.onset, volume.length());
  const FittedRepeats fit = fitRepeats(fromOnset, {0, slices.sliceDuration}, {1, slices.nrOfSlices - 2});
  if (std::fabs(fit.line.period - slices.sliceDuration) < 1) slices.sliceDuration = fit.line.period;
}

double explainedByAverageSlice(const CircularVolume& volume, const SliceStructure& slices) {
  const std::vector<double> average = averageSlice(volume, slices);
  double rest = 0, power = 0;
  for (int32_t s = 0; s < slices.nrOfSlices; ++s) {
    const std::vector<double> slice =
        volume.from(slices.onset + s * slices.sliceDuration, static_cast<int64_t>(average.size()));
    for (size_t t = 0; t < average.size(); ++t) {
      rest += CircularVolume::square(slice[t] - average[t]);
      power += CircularVolume::square(slice[t]);
    }
  }
  return power > 0 ? 1 - rest / power : 0;
}

} // namespace

void findActivity(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                  SliceStructure& slices) {
  if (!(volumeDuration >= 1) || static_cast<double>(twoVolumes.size()) < 2 * std::floor(volumeDuration))
    return;
  findActivityIn(CircularVolume(twoVolumes, volumeDuration, samplingFrequency), slices);
}

SliceStructure findSlices(std::span<const double> twoVolumes, double volumeDuration, double samplingFrequency,
                          const KnownSlices& given) {
  SliceStructure slices;
  slices.sliceDuration = volumeDuration;
  if (!(volumeDuration >= 32) || static_cast<double>(twoVolumes.size()) < 2 * std::floor(volumeDuration))
    return slices;
  // A slice of a few samples is none.
  KnownSlices known = given;
  if (known.nrOfSlices < 0 || known.nrOfSlices > volumeDuration / leastSliceSamples) known.nrOfSlices = 0;
  const CircularVolume volume(twoVolumes, volumeDuration, samplingFrequency);
  std::vector<double> flat(twoVolumes.begin(), twoVolumes.end());
  flattenSpectrum(flat, spectralFloor);
  const CircularVolume flatVolume(flat, volumeDuration, samplingFrequency);
  const double slice = sliceDurationIn(volume, flatVolume, known);
  if (slice <= 0) {
    findActivityIn(volume, slices);
    return slices;
  }

  const double nearest = std::round(volumeDuration / slice);
  std::optional<SimilarStretch> stretch = stretchOfSlices(volume, slice);
  slices.nrOfSlices = known.nrOfSlices > 0 ? known.nrOfSlices : countSlices(volume, slice, stretch);
  slices.sliceDuration = slice;
  const double gap = volumeDuration - slices.nrOfSlices * slice;
  const std::optional<double> behindDeadTime =
      slices.nrOfSlices == nearest ? onsetBehindDeadTime(volume, slice, gap) : std::nullopt;
  const bool hasGap = stretch && gap > smallestGap * slice;
  if (known.onset) {
    slices.onset = *known.onset - std::floor(*known.onset / volumeDuration) * volumeDuration;
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    if (hasGap || behindDeadTime)
      alignSlices(volume, slices);
    else
      slices.sliceDuration = volumeDuration / slices.nrOfSlices;
  } else if (hasGap) {
    slices.onset = static_cast<double>(stretch->begin);
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    alignSlices(volume, slices);
  } else if (behindDeadTime) {
    slices.onset = *behindDeadTime;
    slices.isOnsetKnown = slices.isOnsetCertain = true;
    alignSlices(volume, slices);
    snapToActivity(volume, slices);
  } else {
    slices.sliceDuration = volumeDuration / slices.nrOfSlices;
    findFirstSlice(volume, slices);
  }
  findActivityIn(volume, slices);
  slices.explainedBySlice = explainedByAverageSlice(volume, slices);
  return slices;
}

} // namespace emeg
