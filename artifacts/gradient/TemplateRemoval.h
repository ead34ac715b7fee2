#pragma once

#include "artifacts/gradient/SequenceDetection.h"
#include "artifacts/gradient/SplinedSignal.h"

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

} // namespace emeg
