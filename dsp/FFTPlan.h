#pragma once

#include "dsp/CosineTable.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Cosines and sines of one angle each for neighbouring columns.
struct alignas(64) ColumnTurns {
  static constexpr int64_t columns = 8;
  std::array<double, columns> cosines;
  std::array<double, columns> sines;
};

/// How complex transforms of 2^log2m points, 1024 and more, go through the caches: point j stands in row j1
/// and column j2 of a matrix, j = j1 x columns + j2. The columns are transformed, every result is turned by
/// its row times its column, the rows are transformed, and bin k1 + k2 x rows has come to row k1 and column
/// k2. Columns and rows are short enough for the caches near the core; the matrix is read and written once
/// per step. (Bailey: FFTs in external or hierarchical memory, Journal of Supercomputing 4, 1990.)
class FFTPlan {
public:
  static constexpr int32_t leastLog2m = 10;
  /// Turns by row k1 are the product of a coarse one, k1 / fineTurns, and a fine one, k1 mod fineTurns.
  static constexpr int64_t fineTurns = 16;

  /// `cosines` must cover 2^log2m points.
  FFTPlan(int32_t log2m, const CosineTable& cosines);

  int32_t log2Rows() const { return log2Rows_; }
  int32_t log2Columns() const { return log2Columns_; }
  int64_t rows() const { return int64_t{1} << log2Rows_; }
  int64_t columns() const { return int64_t{1} << log2Columns_; }

  /// Columns that are read, transformed and written together, whatever the vector registers hold: whole cache
  /// lines of every row, more of them where rows lie so far apart that every one is a walk of its own.
  static constexpr int64_t narrowGroup = 8;
  static constexpr int64_t wideGroup = 32;
  int64_t columnsAtOnce() const { return columnsAtOnce_; }

  /// The turns of the columns around `column`, by k1 / fineTurns and by k1 mod fineTurns.
  const ColumnTurns* coarseTurns(int64_t column) const {
    return coarse_.data() + column / ColumnTurns::columns * (rows() / fineTurns);
  }
  const ColumnTurns* fineTurnsOf(int64_t column) const {
    return fine_.data() + column / ColumnTurns::columns * fineTurns;
  }

  /// Cosine and sine of butterfly k < n/4 of a pass that makes blocks of n = 2^log2n points, pair by pair.
  const double* passTurns(int32_t log2n) const { return passTurns_[static_cast<std::size_t>(log2n)].data(); }

  /// Doubles that a pass needs to work in.
  std::size_t workspaceSize() const;

  std::size_t tableBytes() const;

private:
  int32_t log2Rows_;
  int32_t log2Columns_;
  int64_t columnsAtOnce_;
  std::vector<ColumnTurns> coarse_;
  std::vector<ColumnTurns> fine_;
  std::array<std::vector<double>, 32> passTurns_;
};

/// A plan, the bit reversals of its rows and columns, and room for plan.workspaceSize() doubles.
struct LongFFT {
  const FFTPlan& plan;
  const uint32_t* reversedRows;
  const uint32_t* reversedColumns;
  void* work;
};

} // namespace emeg
