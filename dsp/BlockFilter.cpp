#include "dsp/BlockFilter.h"

#include "dsp/RealFFT.h"

#include <cstddef>

namespace emeg {

namespace {

/// Blocks of twice to four times the filter: half to three quarters of every block are kept. Shorter ones
/// transform too much again, longer ones leave the cache and need more context.
int32_t log2BlockLength(int64_t taps) {
  constexpr int32_t least = 11;
  int32_t log2 = least;
  while ((int64_t{1} << log2) < 2 * taps) ++log2;
  return log2;
}

} // namespace

BlockFilter::BlockFilter(std::span<const double> taps) {
  const auto count = static_cast<int64_t>(taps.size());
  log2Length_ = log2BlockLength(count);
  blockLength_ = int64_t{1} << log2Length_;
  hop_ = blockLength_ - (count - 1);

  // The middle tap at 0 and the ones before it at the end: no phase.
  std::vector<double> spectrum(static_cast<std::size_t>(blockLength_));
  const auto half = static_cast<std::size_t>(count / 2);
  for (std::size_t i = 0; i <= half; ++i) spectrum[i] = taps[half + i];
  for (std::size_t i = 1; i <= half; ++i) spectrum[spectrum.size() - i] = taps[half - i];
  FFTWorkspace workspace;
  realFFTForward(spectrum.data(), log2Length_, workspace);

  const double scale = 2 / static_cast<double>(blockLength_);
  const std::size_t bins = spectrum.size() / 2;
  gains_.resize(bins + 1);
  gains_[0] = spectrum[0] * scale;
  gains_[bins] = spectrum[1] * scale;
  for (std::size_t k = 1; k < bins; ++k) gains_[k] = spectrum[2 * k] * scale;
}

void BlockFilter::apply(std::span<double> block, FFTWorkspace& workspace) const {
  realFFTForward(block.data(), log2Length_, workspace);
  const std::size_t bins = gains_.size() - 1;
  block[0] *= gains_[0];
  block[1] *= gains_[bins];
  for (std::size_t k = 1; k < bins; ++k) {
    block[2 * k] *= gains_[k];
    block[2 * k + 1] *= gains_[k];
  }
  realFFTInverse(block.data(), log2Length_, workspace);
}

} // namespace emeg
