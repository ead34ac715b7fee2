#pragma once

#include "dsp/SimdLevel.h"

#include <cstdint>
#include <vector>

namespace emeg {

class FFTWorkspace;

/// One real gain per bin of a real transform, laid out once for filterFFT.
class BinGains {
public:
  BinGains() = default;

  /// From gains in the layout of the packed real spectrum of 2^log2n values (log2n = 4 ... 31), 2^log2n of
  /// them: the ones at index 0, 1 and every even index count.
  BinGains(const float* packed, int32_t log2n, SimdLevel level = bestSimdLevel());

  int32_t log2n() const { return log2n_; }
  SimdLevel level() const { return level_; }
  float dc() const { return dc_; }
  float nyquist() const { return nyquist_; }

  /// Short transforms (below RealFFTPlan::leastLog2n): the gains of the packed spectrum.
  const std::vector<float>& packed() const { return packed_; }

  /// Long ones, in the order in which LongFFTPasses::filterRows goes through its pairs of rows: for every
  /// group of pairs and every column in bit-reversed order the gains of the bins in the upper half's
  /// registers, then those of their mirrors.
  const std::vector<float>& ofPairs() const { return ofPairs_; }
  /// Bins k2 x rows and rows/2 + k2 x rows, k2 = 0 ... columns - 1: the two rows that hold their own mirrors.
  const std::vector<float>& ofFirstRow() const { return ofFirstRow_; }
  const std::vector<float>& ofMiddleRow() const { return ofMiddleRow_; }

private:
  void layOut(const float* packed);

  int32_t log2n_ = 0;
  SimdLevel level_ = SimdLevel::Baseline;
  float dc_ = 0;
  float nyquist_ = 0;
  std::vector<float> packed_;
  std::vector<float> ofPairs_;
  std::vector<float> ofFirstRow_;
  std::vector<float> ofMiddleRow_;
};

/// realFFTForward, multiplication of every bin by its gain and realFFTInverse in one, equal to the three to
/// rounding: `signal` (2^gains.log2n() values) becomes the filtered one times n/2. The spectrum is never
/// brought into its natural order, and long signals pass through memory three times instead of nine. Gains
/// without a length leave the signal as it is.
void filterFFT(double* signal, const BinGains& gains, FFTWorkspace& workspace);

} // namespace emeg
