#include "dsp/FFTPlan.h"

#include <algorithm>

namespace emeg {

namespace {

/// Blocks up to this size are straight-line code.
constexpr int32_t log2LongestLeaf = 5;

/// From here on wide groups are faster (measured).
constexpr int32_t leastLog2mOfWideGroups = 16;

/// The turns by j x k, k = 0, step, 2 step ... (`count` of them), of all columns j.
std::vector<ColumnTurns> turnsOfColumns(const CosineTable& cosines, int32_t log2m, int64_t columns,
                                        int64_t step, int64_t count) {
  const int64_t m = int64_t{1} << log2m;
  std::vector<ColumnTurns> turns;
  turns.reserve(static_cast<std::size_t>(columns / ColumnTurns::columns * count));
  for (int64_t first = 0; first < columns; first += ColumnTurns::columns)
    for (int64_t i = 0; i < count; ++i) {
      ColumnTurns& entry = turns.emplace_back();
      for (int64_t lane = 0; lane < ColumnTurns::columns; ++lane) {
        const Turn turn = cosines.turn((first + lane) * (i * step) % m, log2m);
        entry.cosines[static_cast<std::size_t>(lane)] = turn.cosine;
        entry.sines[static_cast<std::size_t>(lane)] = turn.sine;
      }
    }
  return turns;
}

} // namespace

FFTPlan::FFTPlan(int32_t log2m, const CosineTable& cosines)
    : log2Rows_((log2m + 1) / 2), log2Columns_(log2m / 2),
      columnsAtOnce_(log2m < leastLog2mOfWideGroups ? narrowGroup : wideGroup),
      coarse_(turnsOfColumns(cosines, log2m, columns(), fineTurns, rows() / fineTurns)),
      fine_(turnsOfColumns(cosines, log2m, columns(), 1, fineTurns)) {
  for (int32_t log2n = log2LongestLeaf + 1; log2n <= log2Rows_; ++log2n) {
    std::vector<double>& turns = passTurns_[static_cast<std::size_t>(log2n)];
    for (int64_t k = 0; k < (int64_t{1} << log2n) / 4; ++k) {
      const Turn turn = cosines.turn(k, log2n);
      turns.push_back(turn.cosine);
      turns.push_back(turn.sine);
    }
  }
}

std::size_t FFTPlan::workspaceSize() const {
  // A group of columns; or the rows of two registers of at most `most` lanes and two rows more.
  constexpr int64_t most = 8;
  return static_cast<std::size_t>(std::max(2 * columnsAtOnce_ * rows(), 2 * (2 * most + 2) * columns()));
}

std::size_t FFTPlan::tableBytes() const {
  std::size_t bytes = (coarse_.size() + fine_.size()) * sizeof(ColumnTurns);
  for (const std::vector<double>& turns : passTurns_) bytes += turns.size() * sizeof(double);
  return bytes;
}

} // namespace emeg
