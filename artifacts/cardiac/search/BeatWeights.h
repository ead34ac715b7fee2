#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// Weights of the samples of one beat, 2 x period + 1 values with the beat in the middle:
/// exp(-(j / (0.4 x period))^2) / (2 x period + 1).
std::vector<double> beatWeights(int32_t period);

} // namespace emeg
