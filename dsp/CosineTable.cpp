#include "dsp/CosineTable.h"

#include <cstddef>

namespace emeg {

CosineTable::CosineTable(int32_t log2Period)
    : period_(int64_t{1} << log2Period), quarter_(static_cast<std::size_t>(period_ / 4)) {
  for (std::size_t k = 0; k < quarter_.size(); ++k)
    quarter_[k] = cosineOfTurn(static_cast<int64_t>(k), log2Period);
}

Turn CosineTable::turn(int64_t k, int32_t log2N) const {
  const int64_t quarter = period_ / 4;
  const int64_t position = k * (period_ >> log2N);
  const int64_t within = position % quarter;
  const double cosine = quarter_[static_cast<std::size_t>(within)];
  const double sine = within == 0 ? 0.0 : quarter_[static_cast<std::size_t>(quarter - within)];
  switch (position / quarter) {
  case 0:
    return {cosine, sine};
  case 1:
    return {-sine, cosine};
  case 2:
    return {-cosine, -sine};
  default:
    return {sine, -cosine};
  }
}

} // namespace emeg
