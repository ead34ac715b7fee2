#include "artifacts/cardiac/search/BeatWeights.h"

#include <cmath>

namespace emeg {

std::vector<double> beatWeights(int32_t period) {
  std::vector<double> weights;
  for (int32_t j = -period; j <= period; ++j) {
    const double x = j / (0.4 * period);
    weights.push_back(std::exp(-(x * x)) / (2 * static_cast<int64_t>(period) + 1));
  }
  return weights;
}

} // namespace emeg
