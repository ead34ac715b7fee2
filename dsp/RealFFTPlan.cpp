#include "dsp/RealFFTPlan.h"

namespace emeg {

RealFFTPlan::RealFFTPlan(int32_t log2n, const FFTPlan& plan, const std::vector<uint32_t>& reversedColumns,
                         const CosineTable& cosines)
    : log2n_(log2n) {
  const int64_t half = int64_t{1} << (log2n - 1);
  for (int64_t bin = 0; bin < half / 2; bin += fineBins) coarse_.push_back(cosines.turn(bin, log2n));
  for (int64_t bin = 0; bin < fineBins; ++bin) {
    const Turn turn = cosines.turn(bin, log2n);
    fineCosines_[static_cast<std::size_t>(bin)] = turn.cosine;
    fineSines_[static_cast<std::size_t>(bin)] = turn.sine;
  }
  for (int64_t row = 0; row <= plan.rows() / 2; ++row) {
    const Turn turn = cosines.turn(row, log2n);
    rowCosines_.push_back(turn.cosine);
    rowSines_.push_back(turn.sine);
  }
  for (const uint32_t reversal : reversedColumns)
    columnTurns_.push_back(cosines.turn(reversal / 2 * plan.rows(), log2n));
}

std::size_t RealFFTPlan::tableBytes() const {
  return (coarse_.size() + columnTurns_.size()) * sizeof(Turn) +
         (fineCosines_.size() + fineSines_.size() + rowCosines_.size() + rowSines_.size()) * sizeof(double);
}

} // namespace emeg
