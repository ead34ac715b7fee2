#pragma once

#include "artifacts/gradient/ScanSegment.h"

#include <span>
#include <vector>

namespace emeg {

/// What one channel says for or against a timing. Everything is measured in the sharpened channel (see
/// SharpenedSignal.h), in which hardly more than the gradient artifact is left.
struct TimingEvidence {
  /// Share of the recording's power that does not repeat from volume to volume, or lies outside the scans.
  double unexplained = 1;
  /// Within the scans: the share that differs from one volume to the next; 0: they are alike, 1: they have
  /// nothing in common.
  double unlikeVolumes = 1;
  /// The same over several volumes, as far apart as they are averaged: what a duration that is a little wrong
  /// makes of them.
  double unlikeFar = 1;
  /// The same from one inner slice (neither first nor last) to the next; 0 where no volume has two of them.
  double unlikeSlices = 1;
  /// As above, from one slice to the next that the slice-wise templates would average with it.
  double unlikeStrides = 1;
  /// Something as strong as the artifact lasts for a slice or longer outside the scans.
  bool goesOnOutside = false;
};

/// A found sequence as a segment, in samples from the start of the processed interval.
ScanSegment segmentOf(const MRSequence& sequence, double samplingFrequency);

TimingEvidence evidenceFor(std::span<const double> sharpened, double samplingFrequency,
                           const std::vector<ScanSegment>& scans);

} // namespace emeg
