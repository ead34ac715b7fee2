#pragma once

#include <cstdint>

namespace emeg {

/// 10 to a whole power by repeated squaring; a negative order gives the reciprocal.
double powerOfTen(int32_t order);

} // namespace emeg
