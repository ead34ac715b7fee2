#include "files/exchange/Recording.h"

#include <cmath>

namespace emeg {

int64_t StoredIntegers::integerOf(double value) const {
  return static_cast<int64_t>(std::llround((value - offset) / step));
}

} // namespace emeg
