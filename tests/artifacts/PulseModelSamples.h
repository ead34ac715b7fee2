#pragma once

#include "tests/artifacts/reference/LiteralWarpTable.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace emeg {

using Matrix = std::vector<std::vector<double>>;

inline LiteralModelSetUp setUpOf(double median, double margin, int32_t length) {
  LiteralModelSetUp setUp;
  setUp.medianPulseInterval = median;
  setUp.modelLength = length;
  setUp.warpStep = 1.0 / (length - 1);
  setUp.warpMargin = margin;
  setUp.epochHalfLength = static_cast<int32_t>(std::ceil(length * 0.6));
  return setUp;
}

inline std::vector<double> positionsOf(double start, const std::vector<double>& intervals) {
  std::vector<double> positions{start};
  for (const double interval : intervals) positions.push_back(positions.back() + interval);
  return positions;
}

/// Intervals of whole samples between 200 and 290.
inline std::vector<double> variedIntervals(int count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> intervals;
  for (int i = 0; i < count; ++i) intervals.push_back(200 + static_cast<double>(random() % 91));
  return intervals;
}

inline std::vector<double> noise(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> values(count);
  for (double& value : values) value = normal(random);
  return values;
}

inline Matrix noiseMatrix(std::size_t m, std::size_t n, unsigned seed) {
  const std::vector<double> values = noise(m * n, seed);
  Matrix matrix;
  for (std::size_t i = 0; i < m; ++i)
    matrix.emplace_back(values.begin() + static_cast<std::ptrdiff_t>(i * n),
                        values.begin() + static_cast<std::ptrdiff_t>((i + 1) * n));
  return matrix;
}

} // namespace emeg
