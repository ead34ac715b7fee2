#pragma once

#include "dsp/FilterFFT.h"
#include "dsp/FilterStages.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The gains of a stage list for real transforms of 2^log2N points. They carry the factor 2 / 2^log2N that
/// the inverse transform leaves out.
class FilterResponse {
public:
  FilterResponse() = default;

  /// 0: the response stands for "no filter" and filterSignalFFT leaves signals untouched.
  int nrOfStages() const { return nrOfStages_; }
  /// In the layout of the packed real spectrum: 2^log2N floats and one spare.
  const std::vector<float>& gains() const { return gains_; }
  /// The same as filterSignalFFT goes through them. Empty when there is no filter or no transform of that
  /// length.
  const BinGains& binGains() const { return binGains_; }

private:
  friend FilterResponse makeFilterResponse(const FilterStageList& stages, int32_t log2N);

  int nrOfStages_ = 0;
  std::vector<float> gains_;
  BinGains binGains_;
};

/// Builds the response of a stage list (product of Butterworth-squared edges; a low-pass edge followed by a
/// high-pass edge with a higher cut-off makes a band-stop). Without stages every gain is 2 / 2^log2N. A log2N
/// outside 1 ... 31 gives an empty response.
FilterResponse makeFilterResponse(const FilterStageList& stages, int32_t log2N);

/// Filters the first `nrOfValidSamples` of `signal` (an array of 2^response.binGains().log2n() values) with
/// zero phase. The values behind them are overwritten with a padding that leads from the signal's end back to
/// its start, and hold filtered padding afterwards. Where the padding is longer than the signal its reads are
/// clamped to the signal.
void filterSignalFFT(double* signal, int64_t nrOfValidSamples, const FilterResponse& response,
                     FFTWorkspace& workspace);

} // namespace emeg
