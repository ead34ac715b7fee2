#pragma once

#include "dsp/FFTWorkspace.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Overlap-save: a symmetric filter applied to blocks of a power-of-two length through the real transform.
/// All transforms of the filters are here. Immutable: threads may share it, each with a workspace of its own.
/// (Stockham: High-speed convolution and correlation, AFIPS 1966.)
class BlockFilter {
public:
  BlockFilter() = default;

  /// `taps`: symmetric, odd in number, at least 3.
  explicit BlockFilter(std::span<const double> taps);

  /// Samples that a block takes.
  int64_t blockLength() const { return blockLength_; }
  /// Filtered samples that it yields: those that lie at least half the filter inside.
  int64_t hop() const { return hop_; }

  /// `block` (blockLength() samples) becomes the filtered one with the filter's delay taken out; the first
  /// and last half filter are spoilt.
  void apply(std::span<double> block, FFTWorkspace& workspace) const;

private:
  int64_t blockLength_ = 0;
  int64_t hop_ = 0;
  int32_t log2Length_ = 0;
  /// Gain of every bin, with the transforms' scale taken out: a symmetric filter's response is real.
  std::vector<double> gains_;
};

} // namespace emeg
