#include "dsp/FilterFFT.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/LongFFTPasses.h"
#include "dsp/RealFFT.h"

#include <cstddef>

namespace emeg {

namespace {

/// Shorter signals have no real transform.
constexpr int32_t leastFilterLog2n = 4;

} // namespace

BinGains::BinGains(const float* packed, int32_t log2n, SimdLevel level) : level_(level) {
  if (log2n < leastFilterLog2n || log2n > maxLog2FftSize) return;
  log2n_ = log2n;
  dc_ = packed[0];
  nyquist_ = packed[1];
  if (log2n < RealFFTPlan::leastLog2n) {
    packed_.assign(packed, packed + (std::size_t{1} << log2n));
    for (std::size_t k = 2; k < packed_.size(); k += 2) packed_[k + 1] = packed_[k];
  } else {
    layOut(packed);
  }
}

void BinGains::layOut(const float* packed) {
  const FFTPlan& plan = fftTables().fftPlan(log2n_ - 1);
  const std::vector<uint32_t>& reversals = fftTables().bitReversalTable(plan.log2Columns());
  const int64_t rows = plan.rows();
  const int64_t columns = plan.columns();
  const int64_t lanes = longFFTPasses(level_).lanes;
  const auto gainOf = [&](int64_t bin) { return packed[2 * bin]; };

  ofPairs_.reserve(static_cast<std::size_t>(rows * columns));
  for (int64_t group = 0; group < rows / 2; group += lanes)
    for (const uint32_t reversal : reversals) {
      const int64_t bin = group + reversal / 2 * rows;
      for (int64_t lane = 0; lane < lanes; ++lane) ofPairs_.push_back(gainOf(bin + lane));
      // Bin 0 has no mirror; the rows that hold their own are done apart.
      for (int64_t lane = 0; lane < lanes; ++lane)
        ofPairs_.push_back(bin + lane == 0 ? 0.0F : gainOf(rows * columns - bin - lane));
    }
  for (int64_t column = 0; column < columns; ++column) {
    ofFirstRow_.push_back(gainOf(column * rows));
    ofMiddleRow_.push_back(gainOf(rows / 2 + column * rows));
  }
}

void filterFFT(double* signal, const BinGains& gains, FFTWorkspace& workspace) {
  const int32_t log2n = gains.log2n();
  if (log2n < leastFilterLog2n) return;
  if (log2n < RealFFTPlan::leastLog2n) {
    realFFTForward(signal, log2n, workspace);
    for (std::size_t k = 0; k < gains.packed().size(); ++k)
      signal[k] *= static_cast<double>(gains.packed()[k]);
    realFFTInverse(signal, log2n, workspace);
    return;
  }
  const RealFFTPlan& realPlan = workspace.realFFTPlan(log2n);
  const LongFFT fft = workspace.longFFT(log2n - 1);
  const LongFFTPasses& passes = longFFTPasses(gains.level());
  passes.transformColumnsInPairs(fft, signal);
  passes.filterRows(fft, realPlan, gains, signal);
  passes.restoreColumns(fft, signal);
}

} // namespace emeg
