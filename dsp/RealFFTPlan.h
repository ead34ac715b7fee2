#pragma once

#include "dsp/CosineTable.h"
#include "dsp/FFTPlan.h"
#include "dsp/FFTTwiddles.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// What a real transform of 2^log2n values, 2048 and more, needs beyond the complex one of half its length m:
/// turns by pi k / m for bin k. (The cosine table has them too, but as long as it serves a longer transform
/// they lie far apart in it.)
class RealFFTPlan {
public:
  static constexpr int32_t leastLog2n = 11;
  /// The turn of bin k is the product of a coarse one, k / fineBins, and a fine one, k mod fineBins.
  static constexpr int64_t fineBins = 64;

  /// `plan` is that of the m complex points, `reversedColumns` the bit-reversal table of its columns;
  /// `cosines` must cover 2^log2n points.
  RealFFTPlan(int32_t log2n, const FFTPlan& plan, const std::vector<uint32_t>& reversedColumns,
              const CosineTable& cosines);

  int32_t log2n() const { return log2n_; }
  const Turn& coarseTurn(int64_t bin) const { return coarse_[static_cast<std::size_t>(bin / fineBins)]; }
  /// Those of the following bins stand behind.
  const double* fineCosines(int64_t bin) const { return fineCosines_.data() + bin % fineBins; }
  const double* fineSines(int64_t bin) const { return fineSines_.data() + bin % fineBins; }

  /// The same as a product of row k1 and column k2 of the transform's matrix (bin k = k1 + k2 x rows): of the
  /// rows up to the middle one ...
  const double* rowCosines() const { return rowCosines_.data(); }
  const double* rowSines() const { return rowSines_.data(); }
  /// ... and of the columns, in bit-reversed order.
  const Turn* columnTurns() const { return columnTurns_.data(); }

  std::size_t tableBytes() const;

private:
  int32_t log2n_;
  std::vector<Turn> coarse_;
  std::array<double, fineBins> fineCosines_;
  std::array<double, fineBins> fineSines_;
  std::vector<double> rowCosines_;
  std::vector<double> rowSines_;
  std::vector<Turn> columnTurns_;
};

} // namespace emeg
