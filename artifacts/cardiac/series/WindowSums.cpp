#include "artifacts/cardiac/series/WindowSums.h"

#include <algorithm>

namespace emeg {

void windowSums(const double* values, int64_t taps, int64_t count, double* sums, double* scratch) {
  // Every window is the end of one block of `taps` values and the beginning of the next.
  const int64_t length = count + taps - 1;
  for (int64_t first = 0; first < length; first += taps) {
    double sum = 0;
    for (int64_t i = std::min(first + taps, length) - 1; i >= first; --i) scratch[i] = sum += values[i];
  }
  for (int64_t first = 0; first < count; first += taps) {
    sums[first] = scratch[first];
    double nextBlock = 0;
    for (int64_t p = first + 1; p < std::min(first + taps, count); ++p) {
      nextBlock += values[p + taps - 1];
      sums[p] = scratch[p] + nextBlock;
    }
  }
}

} // namespace emeg
