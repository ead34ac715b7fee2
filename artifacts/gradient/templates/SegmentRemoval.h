#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include "dsp/RecordingStretch.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Removes the gradient artifact of scans whose timing is known, each with its own; what lies between scans
/// stays as it is. Volumes that the recording or the scan cuts are corrected as far as they go.
class SegmentRemoval {
public:
  /// `segments` in ascending order, positions in samples of the channels. `windowSlices`: half-length of the
  /// averaging window.
  SegmentRemoval(std::vector<ScanSegment> segments, double samplingFrequency, bool volumeWise,
                 int32_t windowSlices);

  /// Adds the artifact of all scans to `artifactEstimate`, which is as long as the channel.
  void estimate(std::span<const double> channel, std::span<double> artifactEstimate);

  /// The same for the positions `outputs` alone, from a stretch that holds them and context() samples on both
  /// sides of them as far as the recording goes.
  void estimate(const RecordingStretch& stretch, PositionRange outputs, std::span<double> artifactEstimate);
  int64_t context() const;

  const std::vector<ScanSegment>& segments() const { return segments_; }

  /// Bytes that `estimate` needs at most for scans of three volumes and more.
  static uint64_t memoryFor(int64_t nrOfSamples);

private:
  void estimateScan(size_t index, const RecordingStretch& stretch, PositionRange outputs,
                    std::span<double> artifactEstimate);
  MRSequence windowed(MRSequence sequence) const;
  double weightAt(const ScanSegment& segment, double position) const;

  std::vector<ScanSegment> segments_;
  double fs_;
  bool volumeWise_;
  int32_t windowSlices_;
  std::vector<double> b_, c_, d_, estimate_; ///< kept from channel to channel
};

} // namespace emeg
