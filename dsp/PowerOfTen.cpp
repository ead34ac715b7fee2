#include "dsp/PowerOfTen.h"

namespace emeg {

double powerOfTen(int32_t order) {
  double power = 1;
  double square = 10;
  for (uint32_t rest = order < 0 ? 0u - static_cast<uint32_t>(order) : static_cast<uint32_t>(order);
       rest != 0; rest /= 2) {
    if (rest % 2 != 0) power *= square;
    square *= square;
  }
  return order < 0 ? 1 / power : power;
}

} // namespace emeg
