#include "artifacts/cardiac/series/BcgSeries.h"

#include "artifacts/cardiac/series/Energy.h"

#include <algorithm>

namespace emeg {

void copyWindow(const double* samples, int64_t length, int64_t first, int64_t count, double* out) {
  const int64_t begin = std::clamp<int64_t>(-first, 0, count);
  const int64_t end = std::clamp<int64_t>(length - first, begin, count);
  std::fill(out, out + begin, 0.0);
  if (begin < end) std::copy(samples + (first + begin), samples + (first + end), out + begin);
  std::fill(out + end, out + count, 0.0);
}

bool hasEnergy(const double* samples, int64_t length) {
  return energyOf({samples, static_cast<size_t>(length)}) > 0;
}

} // namespace emeg
