#include "engine/figures/VolumeAverage.h"

#include "dsp/Statistics.h"
#include "engine/figures/VolumeLines.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t blockLength = 512;

} // namespace

double VolumeLockedPart::artifact() const {
  const double lines = sliceHarmonics * sliceHarmonics + volumeHarmonics * volumeHarmonics;
  return std::sqrt(std::max(lines - background * background, 0.0));
}

VolumeAverage::VolumeAverage(const VolumeGrid& grid, const FrequencyRange& range, double factor, Drift drift)
    : grid_(&grid), range_(range), factor_(factor),
      measuresDrift_(drift == Drift::Measured && grid.nrOfPairs() >= VolumeGrid::nrOfParts) {}

void VolumeAverage::add(std::span<const double> samples) {
  if (!grid_->isMeasurable()) return;
  while (!samples.empty()) {
    if (position_ == volumeEnd_) beginVolume();
    const auto count = std::min(samples.size(), static_cast<size_t>(volumeEnd_ - position_));
    addToVolume(samples.first(count));
    if (grid_->isPaired(volume_)) addToAverages(samples.first(count));
    position_ += static_cast<int64_t>(count);
    samples = samples.subspan(count);
    if (position_ == volumeEnd_) endVolume();
  }
}

void VolumeAverage::beginVolume() {
  volume_ = grid_->volumeAt(position_);
  volumeBegin_ = position_;
  volumeEnd_ = grid_->endOfVolumeAt(position_);
  if (!grid_->isPaired(volume_) || !pairSums_.empty()) return;
  pairSums_.assign(grid_->nrOfPairPhases(), 0);
  if (measuresDrift_) partSums_.assign(grid_->nrOfVolumePhases() * VolumeGrid::nrOfParts, 0);
}

void VolumeAverage::endVolume() {
  const int64_t count = position_ - volumeBegin_;
  if (grid_->isWhole(count)) {
    const auto roughness = static_cast<float>(steps_ / static_cast<double>(count));
    if (grid_->isCounted(volume_)) peakToPeaks_.push_back(static_cast<float>(highest_ - lowest_));
    if (grid_->isCounted(volume_)) roughnesses_.push_back(roughness);
    if (grid_->isOutside(volume_)) outside_.push_back(roughness);
  }
  if (grid_->isPaired(volume_) && !grid_->isPaired(volume_ + 1)) summarise();
}

double VolumeAverage::numberOf(double sample) const {
  const double number = sample * factor_;
  return std::isfinite(number) ? number : 0;
}

void VolumeAverage::addToVolume(std::span<const double> samples) {
  if (position_ == volumeBegin_) {
    last_ = lowest_ = highest_ = numberOf(samples.front());
    steps_ = 0;
  }
  for (const double sample : samples) {
    const double value = numberOf(sample);
    lowest_ = std::min(lowest_, value);
    highest_ = std::max(highest_, value);
    steps_ += std::abs(value - last_);
    last_ = value;
  }
}

void VolumeAverage::addToAverages(std::span<const double> samples) {
  for (size_t first = 0; first < samples.size(); first += blockLength)
    addBlock(samples.subspan(first, std::min(blockLength, samples.size() - first)),
             position_ + static_cast<int64_t>(first));
}

/// Phases of a few samples at once: their divisions are most of the work.
void VolumeAverage::addBlock(std::span<const double> samples, int64_t first) {
  std::array<int32_t, blockLength> room;
  const auto phases = std::span<int32_t>(room).first(samples.size());
  grid_->pairPhasesOf(volume_, first, phases);
  for (size_t i = 0; i < samples.size(); ++i)
    pairSums_[static_cast<size_t>(phases[i])] += numberOf(samples[i]);
  if (!measuresDrift_) return;
  grid_->volumePhasesOf(volume_, first, phases);
  double* const sums = partSums_.data() + grid_->partOf(volume_) * grid_->nrOfVolumePhases();
  for (size_t i = 0; i < samples.size(); ++i) sums[phases[i]] += numberOf(samples[i]);
}

/// The sums are large and no longer needed behind the scan.
void VolumeAverage::summarise() {
  volumeLocked_ = volumeLockedNow();
  drift_ = driftNow();
  isSummarised_ = true;
  pairSums_ = std::vector<double>(); // braces alone would keep the memory
  partSums_ = std::vector<double>();
}

/// A phase that no sample meets repeats the one before it.
std::vector<double> VolumeAverage::pairAverage() const {
  std::vector<double> average(pairSums_.size());
  double last = 0;
  for (size_t i = 0; i < average.size(); ++i) {
    const int64_t count = grid_->pairCounts()[i];
    if (count > 0) last = pairSums_[i] / static_cast<double>(count);
    average[i] = last;
  }
  return average;
}

std::vector<double> VolumeAverage::partAverage(size_t part) const {
  std::vector<double> average(grid_->nrOfVolumePhases());
  double last = 0;
  for (size_t i = 0; i < average.size(); ++i) {
    const size_t phase = part * average.size() + i;
    const int64_t count = grid_->partCounts()[phase];
    if (count > 0) last = partSums_[phase] / static_cast<double>(count);
    average[i] = last;
  }
  return average;
}

VolumeLockedPart VolumeAverage::volumeLockedNow() const {
  if (pairSums_.empty()) return {};
  return volumeLinesOf(pairAverage(), grid_->sequence(), range_);
}

double VolumeAverage::medianImagingArtifact() const {
  return median(peakToPeaks_);
}

double VolumeAverage::artifactSecondsOutside() const {
  const double half = median(roughnesses_) / 2;
  const auto loud = std::count_if(outside_.begin(), outside_.end(),
                                  [half](float value) { return static_cast<double>(value) > half; });
  return half > 0 ? static_cast<double>(loud) * grid_->sequence().volumeDuration : 0;
}

double VolumeAverage::driftNow() const {
  if (partSums_.empty()) return 0;
  constexpr double longestDrift = 0.02; // seconds
  const auto longestLag = static_cast<int64_t>(longestDrift * grid_->samplingFrequency()) + 1;
  const std::vector<double> first = partAverage(0);
  const double phase = grid_->sequence().volumeDuration / static_cast<double>(first.size());
  // Samples of different parts may lie at different places within a phase.
  const auto driftTo = [&](size_t part) {
    const double lag = lagBetween(first, partAverage(part), longestLag);
    return (lag + grid_->meanOffset(part) - grid_->meanOffset(0)) * phase;
  };
  const double middle = driftTo(1);
  const double end = driftTo(2);
  return std::abs(middle) > std::abs(end) ? middle : end;
}

} // namespace emeg
