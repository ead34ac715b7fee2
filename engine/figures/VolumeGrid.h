#pragma once

#include "engine/timing/FoundScan.h"

#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace emeg {

/// Where the samples of a recording lie in the volumes of one scan: in which volume, at which phase of a
/// volume, at which phase of a pair of volumes. Volumes are numbered from the scan's first one on and go on
/// to both sides of it. The same for all channels, and never changed: threads may share it.
class VolumeGrid {
public:
  static constexpr int nrOfParts = 3; ///< of the scan, to compare the first with the last

  /// `samplingFrequency` in Hz. `corrected`: all scans of the recording, this one included.
  VolumeGrid(const MRSequence& sequence, double samplingFrequency, int64_t nrOfTimePoints,
             std::span<const FoundScan> corrected);

  /// False without two whole pairs of volumes in the recording, and with a timing or rate that makes no
  /// sense. All that follows needs true.
  bool isMeasurable() const { return isMeasurable_; }

  const MRSequence& sequence() const { return sequence_; }
  double samplingFrequency() const { return samplingFrequency_; }
  int64_t nrOfTimePoints() const { return nrOfTimePoints_; }

  int64_t volumeAt(int64_t position) const;
  /// The first sample at or behind `position` that lies in a later volume.
  int64_t endOfVolumeAt(int64_t position) const;
  bool isCounted(int64_t volume) const { return volume >= 0 && volume < sequence_.nrOfVolumes; }
  /// Whether the volume overlaps with nothing that is corrected.
  bool isOutside(int64_t volume) const;
  /// Whether so many samples are (nearly) all of a volume.
  bool isWhole(int64_t nrOfSamples) const;

  /// Pairs of volumes are averaged; a last one without a partner is not.
  bool isPaired(int64_t volume) const { return volume >= 0 && volume < 2 * nrOfPairs_; }
  int64_t nrOfPairs() const { return nrOfPairs_; }
  size_t nrOfPairPhases() const { return static_cast<size_t>(nrOfPairPhases_); }
  size_t nrOfVolumePhases() const { return static_cast<size_t>(nrOfVolumePhases_); }

  /// Phases, from 0 on, of the samples of a paired volume from `first` on: in the pair, in the volume.
  void pairPhasesOf(int64_t volume, int64_t first, std::span<int32_t> phases) const;
  void volumePhasesOf(int64_t volume, int64_t first, std::span<int32_t> phases) const;
  /// Which part of the scan a paired volume belongs to.
  size_t partOf(int64_t volume) const;

  /// Samples of the whole recording per phase of a pair.
  const std::vector<int64_t>& pairCounts() const { return pairCounts_; }
  /// ... per phase of a volume, part of the scan after part.
  const std::vector<int64_t>& partCounts() const { return partCounts_; }
  /// Mean place of a part's samples within their phases, 0 ... 1.
  double meanOffset(size_t part) const;

private:
  bool makesSense() const;
  double inVolumes(double position) const;
  void countSamples();
  void countVolume(int64_t volume, int64_t begin, int64_t end);

  MRSequence sequence_;
  double samplingFrequency_;
  int64_t nrOfTimePoints_;
  int64_t nrOfPairs_;
  bool isMeasurable_ = false;
  int nrOfPairPhases_ = 0, nrOfVolumePhases_ = 0;
  std::vector<int64_t> pairCounts_, partCounts_;
  std::array<double, nrOfParts> partOffsets_{}; ///< sum of the samples' places within their phases
  std::array<int64_t, nrOfParts> partLengths_{};
  std::vector<std::pair<double, double>> corrected_; ///< seconds
};

} // namespace emeg
