#pragma once

#include "dsp/FilterStages.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The gains of a stage list for real transforms of 2^log2N points, in the layout of the packed real spectrum
/// (2^log2N floats and one spare). They carry the factor 2 / 2^log2N that the inverse transform leaves out.
struct FilterResponse {
  int32_t log2N = 0;
  int nrOfStages = 0; ///< 0: the response stands for "no filter" and filterSignalFFT leaves signals untouched
  std::vector<float> gains;
};

/// Builds the response of a stage list (product of Butterworth-squared edges; a low-pass edge followed by a
/// high-pass edge with a higher cut-off makes a band-stop). Without stages every gain is 2 / 2^log2N. A log2N
/// outside 1 ... 31 gives an empty response.
FilterResponse makeFilterResponse(const FilterStageList& stages, int32_t log2N);

/// Filters the first `nrOfValidSamples` of `signal` (an array of 2^response.log2N values) with zero phase.
/// The values behind them are overwritten with a padding that leads from the signal's end back to its start,
/// and hold filtered padding afterwards. Where the padding is longer than the signal its reads are clamped to
/// the signal.
void filterSignalFFT(double* signal, int64_t nrOfValidSamples, const FilterResponse& response);

} // namespace emeg
