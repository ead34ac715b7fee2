#pragma once

#include "artifacts/gradient/SplinedSignal.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cstdint>

namespace emeg {

/// Estimates the gradient artifact of one channel as the sum of averaged templates: for every slice
/// (slice-wise) or volume (volume-wise) the Gaussian-weighted mean of the channel's signal in neighbouring
/// slices or volumes, each resampled onto the current onset with sub-sample precision through the signal's
/// spline, joined by smooth ramps. A slice or volume never contributes to its own template.
///
/// The estimate is added to `artifactEstimate` (signal.nrOfSamples values, cleared by the caller). `sequence`
/// is a found one (sliceDuration > 0), with its windowHalfLength answered.
///
/// After Allen, Josephs, Turner, NeuroImage 12 (2000): averaged artifact subtraction, here with sub-sample
/// alignment in place of a scanner clock.
void estimateGradientArtifact(const SplinedSignal& signal, const MRSequence& sequence,
                              double samplingFrequency, bool volumeWise, double* artifactEstimate);

/// Volumes first ... end - 1.
struct VolumeRange {
  int64_t first = 0;
  int64_t end = 0;
};

/// The same for some of the sequence's volumes only; the signal holds at least those and the ones within the
/// window's reach of them.
void estimateGradientArtifact(const SplinedSignal& signal, const MRSequence& sequence,
                              double samplingFrequency, bool volumeWise, VolumeRange volumes,
                              double* artifactEstimate);

/// The averaging window of `slices` slices to either side, in seconds, for one average (volume-wise or
/// slice-wise). Neighbours are as far apart as volumes, or as slices that are averaged with each other: the
/// window is widened by that distance (root of the sum of squares), so that however short it is the nearest
/// neighbours count.
double windowSecondsOf(const MRSequence& sequence, int slices, bool volumeWise);

/// Seconds on either side of a volume from which its template is made: the window's reach and whole volumes.
double templateReachOf(const MRSequence& sequence);

} // namespace emeg
