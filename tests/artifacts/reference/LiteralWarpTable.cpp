#include "tests/artifacts/reference/LiteralWarpTable.h"

namespace emeg {

double literalFirstPartFactor(double a, const LiteralModelSetUp& setUp) {
  return 3 * (a - setUp.warpMargin);
}

double literalSecondPartFactor(double a, const LiteralModelSetUp& setUp) {
  return 3 * (1 - a - setUp.warpMargin);
}

LiteralWarpTable literalWarpTable(double a, const LiteralModelSetUp& setUp) {
  const int32_t length = setUp.modelLength;
  const double h = setUp.warpStep;
  const double median = setUp.medianPulseInterval;
  LiteralWarpTable table;
  table.warpPosition.assign(static_cast<std::size_t>(length), 0.0);
  table.warpOffset.assign(static_cast<std::size_t>(length), 0.0);
  table.warpPosition.back() = 1.0;

  const int32_t k0 = static_cast<int32_t>(std::ceil((length - 1) * a));

  const double c1 = literalFirstPartFactor(a, setUp);
  double x = 1.0;
  for (int32_t k = k0 - 1; k >= 1; --k) {
    const double y = k * h;
    x = literalRoot([&](double t) { return ((1 - t) * c1 + a * (t * t)) * t - y; },
                    [&](double t) { return (1 - 2 * t) * c1 + 3 * a * (t * t); }, x);
    const std::size_t index = static_cast<std::size_t>(k);
    table.warpPosition[index] = 0.5 * (x * x * x);
    table.warpOffset[index] = (y - table.warpPosition[index]) * median;
  }

  const double c2 = literalSecondPartFactor(a, setUp);
  x = 1.0;
  for (int32_t k = k0; k <= length - 2; ++k) {
    const double y = 1 - k * h;
    x = literalRoot([&](double t) { return ((1 - t) * c2 + (1 - a) * (t * t)) * t - y; },
                    [&](double t) { return (1 - 2 * t) * c2 + 3 * (1 - a) * (t * t); }, x);
    const std::size_t index = static_cast<std::size_t>(k);
    table.warpPosition[index] = 1 - 0.5 * (x * x * x);
    table.warpOffset[index] = (k * h - table.warpPosition[index]) * median;
  }
  return table;
}

} // namespace emeg
