#include "artifacts/cardiac/model/WarpTable.h"

#include "artifacts/cardiac/model/WarpEquation.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

/// The root x of ((1 - x) bend + share x^2) x = y.
double solveWarp(double bend, double share, double y, double start) {
  return solveRising([=](double x) { return ((1 - x) * bend + share * (x * x)) * x - y; },
                     [=](double x) { return (1 - 2 * x) * bend + 3 * share * (x * x); }, start);
}

} // namespace

WarpTable makeWarpTable(double a, const BeatTimeBase& base) {
  const int32_t last = base.modelLength - 1;
  const double h = base.warpStep;
  const double median = base.medianPulseInterval;
  const double firstBend = 3 * (a - base.warpMargin);
  const double secondBend = 3 * (1 - a - base.warpMargin);
  const auto junction = static_cast<int32_t>(std::clamp(std::ceil(last * a), 0.0, static_cast<double>(last)));
  WarpTable table;
  table.warpPosition.assign(static_cast<size_t>(last) + 1, 0.0);
  table.warpOffset.assign(static_cast<size_t>(last) + 1, 0.0);
  table.warpPosition.back() = 1.0;

  double x = 1.0;
  for (int32_t k = junction - 1; k >= 1; --k) {
    const double y = k * h;
    x = solveWarp(firstBend, a, y, x);
    const double position = 0.5 * x * x * x;
    table.warpPosition[static_cast<size_t>(k)] = position;
    table.warpOffset[static_cast<size_t>(k)] = (y - position) * median;
  }
  x = 1.0;
  for (int32_t k = junction; k < last; ++k) {
    const double y = k * h;
    x = solveWarp(secondBend, 1 - a, 1 - y, x);
    const double position = 1 - 0.5 * x * x * x;
    table.warpPosition[static_cast<size_t>(k)] = position;
    table.warpOffset[static_cast<size_t>(k)] = (y - position) * median;
  }
  return table;
}

} // namespace emeg
