#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/RowMatrix.h"

#include <cstddef>
#include <vector>

namespace emeg {

/// Cuts resampled intervals into epochs around the junctions of successive intervals: `beat` (interval
/// `index`, modelLength values) becomes the first part of epoch `index` and the last part of epoch `index`
/// - 1. `epochs` holds nrOfEpochs rows of epochLength values.
void cutIntoEpochs(const BeatTimeBase& base, size_t index, const std::vector<double>& beat,
                   RowMatrix& epochs);

/// Replaces `beat` (interval `index`) by what the epochs at its two ends say; they fade into each other in
/// the middle. `epochBefore` or `epochAfter` is null at the ends of the recording, where the beat's own
/// values stay.
void reassembleBeat(const BeatTimeBase& base, const double* epochBefore, const double* epochAfter,
                    std::vector<double>& beat);

/// Writes a beat on the common time base back into the samples of interval `index`; the inverse of the
/// resampling for warp parameter `a`. Samples outside the series are left out.
void writeBeatBack(const BeatTimeBase& base, size_t index, double a, const std::vector<double>& beat,
                   double* series, int64_t length);

} // namespace emeg
