#include "engine/figures/VolumeGrid.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr double phasesPerSecond = 1000; // enough for lines up to 100 Hz
constexpr int64_t fewestPairs = 2;
constexpr double wholeVolume = 0.95; // of a volume's samples must be there
constexpr double mostSamples = 1e15; // keeps numbers of samples exact

} // namespace

VolumeGrid::VolumeGrid(const MRSequence& sequence, double samplingFrequency, int64_t nrOfTimePoints,
                       std::span<const FoundScan> corrected)
    : sequence_(sequence), samplingFrequency_(samplingFrequency), nrOfTimePoints_(nrOfTimePoints),
      nrOfPairs_(sequence.nrOfVolumes / 2) {
  isMeasurable_ = makesSense();
  if (!isMeasurable_) return;
  for (const FoundScan& scan : corrected) corrected_.emplace_back(scan.begin, scan.end);
  // As many phases as samples, so that a volume of whole samples meets every phase equally often.
  const double thinning = std::max(std::floor(samplingFrequency / phasesPerSecond), 1.0);
  const double perSecond = samplingFrequency / thinning;
  nrOfPairPhases_ = std::max(static_cast<int>(std::lround(2 * sequence.volumeDuration * perSecond)), 1);
  nrOfVolumePhases_ = std::max(static_cast<int>(std::lround(sequence.volumeDuration * samplingFrequency)), 1);
  countSamples();
}

/// A recording that holds two pairs of volumes bounds the numbers of samples in a volume, too.
bool VolumeGrid::makesSense() const {
  const double fs = samplingFrequency_;
  const double duration = sequence_.volumeDuration;
  const double first = sequence_.firstTriggerTime;
  if (!std::isfinite(fs) || !(fs > 0) || !std::isfinite(duration) || !(duration * fs >= 1)) return false;
  if (!(std::abs(first) * fs <= mostSamples) || nrOfPairs_ < fewestPairs) return false;
  const auto samples = static_cast<double>(nrOfTimePoints_);
  constexpr int mostSamplesPerVolume = std::numeric_limits<int>::max() / 4;
  const double needed = 2 * static_cast<double>(fewestPairs) * duration;
  return samples <= mostSamples && duration * fs < mostSamplesPerVolume && needed <= samples / fs &&
         samples / fs >= first + needed;
}

double VolumeGrid::inVolumes(double position) const {
  return (position / samplingFrequency_ - sequence_.firstTriggerTime) / sequence_.volumeDuration;
}

int64_t VolumeGrid::volumeAt(int64_t position) const {
  return static_cast<int64_t>(std::floor(inVolumes(static_cast<double>(position))));
}

int64_t VolumeGrid::endOfVolumeAt(int64_t position) const {
  const int64_t volume = volumeAt(position);
  auto end = static_cast<int64_t>(sequence_.onsetOf(volume + 1, 0, samplingFrequency_));
  end = std::max(end, position + 1);
  // The last bits of both computations may differ: volumeAt decides.
  while (end > position + 1 && volumeAt(end - 1) > volume) --end;
  while (volumeAt(end) == volume) ++end;
  return end;
}

bool VolumeGrid::isOutside(int64_t volume) const {
  if (isCounted(volume)) return false;
  const double begin = sequence_.onsetOf(volume, 0, 1);
  const double end = begin + sequence_.volumeDuration;
  return std::none_of(corrected_.begin(), corrected_.end(),
                      [&](const auto& stretch) { return stretch.first < end && stretch.second > begin; });
}

bool VolumeGrid::isWhole(int64_t nrOfSamples) const {
  return static_cast<double>(nrOfSamples) >= wholeVolume * sequence_.volumeDuration * samplingFrequency_;
}

void VolumeGrid::pairPhasesOf(int64_t volume, int64_t first, std::span<int32_t> phases) const {
  const auto begin = static_cast<double>(first);
  const auto number = static_cast<double>(volume);
  const double half = volume % 2 == 0 ? 0 : 1;
  for (size_t i = 0; i < phases.size(); ++i) {
    const double inVolume = inVolumes(begin + static_cast<int32_t>(i)) - number;
    phases[i] = std::min(static_cast<int32_t>((inVolume + half) / 2 * nrOfPairPhases_), nrOfPairPhases_ - 1);
  }
}

void VolumeGrid::volumePhasesOf(int64_t volume, int64_t first, std::span<int32_t> phases) const {
  const auto begin = static_cast<double>(first);
  const auto number = static_cast<double>(volume);
  for (size_t i = 0; i < phases.size(); ++i) {
    const double inVolume = inVolumes(begin + static_cast<int32_t>(i)) - number;
    phases[i] = std::min(static_cast<int32_t>(inVolume * nrOfVolumePhases_), nrOfVolumePhases_ - 1);
  }
}

size_t VolumeGrid::partOf(int64_t volume) const {
  return static_cast<size_t>(volume * nrOfParts / (2 * nrOfPairs_));
}

void VolumeGrid::countVolume(int64_t volume, int64_t begin, int64_t end) {
  std::vector<int32_t> phases(static_cast<size_t>(end - begin));
  pairPhasesOf(volume, begin, phases);
  for (const int32_t phase : phases) ++pairCounts_[static_cast<size_t>(phase)];
  volumePhasesOf(volume, begin, phases);
  const size_t part = partOf(volume);
  for (const int32_t phase : phases) {
    ++partCounts_[part * nrOfVolumePhases() + static_cast<size_t>(phase)];
    const double inVolume = inVolumes(static_cast<double>(begin++)) - static_cast<double>(volume);
    partOffsets_[part] += inVolume * nrOfVolumePhases_ - phase;
  }
  partLengths_[part] += static_cast<int64_t>(phases.size());
}

void VolumeGrid::countSamples() {
  pairCounts_.assign(nrOfPairPhases(), 0);
  partCounts_.assign(nrOfVolumePhases() * nrOfParts, 0);
  const double first = std::floor(sequence_.firstTriggerTime * samplingFrequency_) - 1;
  auto position = static_cast<int64_t>(std::clamp(first, 0.0, static_cast<double>(nrOfTimePoints_)));
  while (position < nrOfTimePoints_) {
    const int64_t volume = volumeAt(position);
    const int64_t end = std::min(endOfVolumeAt(position), nrOfTimePoints_);
    if (volume >= 2 * nrOfPairs_) return;
    if (volume >= 0) countVolume(volume, position, end);
    position = end;
  }
}

double VolumeGrid::meanOffset(size_t part) const {
  return partOffsets_[part] / static_cast<double>(std::max<int64_t>(partLengths_[part], 1));
}

} // namespace emeg
