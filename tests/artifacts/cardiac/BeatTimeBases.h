#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/WarpTable.h"
#include "tests/artifacts/PulseModelSamples.h"
#include "tests/artifacts/reference/LiteralWarpTable.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

/// Time bases, and their counterparts of the plain version.
namespace emeg {

/// A time base with these values, whatever the intervals say.
inline BeatTimeBase timeBaseWith(double median, double margin, int32_t modelLength,
                                 const std::vector<double>& pulsePositions = {}) {
  BeatTimeBase base;
  base.pulsePositions = pulsePositions;
  for (std::size_t i = 1; i < pulsePositions.size(); ++i)
    base.pulseIntervals.push_back(pulsePositions[i] - pulsePositions[i - 1]);
  base.medianPulseInterval = median;
  base.modelLength = modelLength;
  base.warpStep = 1.0 / (modelLength - 1);
  base.warpMargin = margin;
  base.epochHalfLength = static_cast<int32_t>(std::ceil(modelLength * 0.6));
  return base;
}

inline LiteralModelSetUp literalOf(const BeatTimeBase& base) {
  LiteralModelSetUp setUp;
  setUp.pulseIntervals = base.pulseIntervals;
  setUp.medianPulseInterval = base.medianPulseInterval;
  setUp.modelLength = base.modelLength;
  setUp.warpStep = base.warpStep;
  setUp.warpMargin = base.warpMargin;
  setUp.epochHalfLength = base.epochHalfLength;
  return setUp;
}

inline LiteralWarpTable literalOf(const WarpTable& table) {
  return {table.warpPosition, table.warpOffset};
}

/// `length` samples of noise and a 0 behind them, as channels are stored.
inline std::vector<double> noiseSeries(std::size_t length, unsigned seed, double scale = 1) {
  std::vector<double> series = noise(length, seed);
  for (double& value : series) value *= scale;
  series.push_back(0.0);
  return series;
}

/// A wave per beat that is stretched with the interval up to `bend` (0 to 1) of it, and the same in all
/// intervals behind it, on some noise: the warp that fits depends on the bend. A 0 stands behind it.
inline std::vector<double> stretchedBeats(const std::vector<double>& positions, std::size_t length,
                                          double bend, double noiseScale) {
  std::vector<double> series = noiseSeries(length, 77, noiseScale);
  for (std::size_t i = 0; i + 1 < positions.size(); ++i) {
    const double interval = positions[i + 1] - positions[i];
    const double surplus = interval - 245;
    for (double t = 0; t < interval; t += 1) {
      const double x = t / interval;
      const double absorbed = surplus / (1 + std::exp((bend - x) * 20));
      const double place = (t - absorbed) / 245;
      series[static_cast<std::size_t>(positions[i] + t)] +=
          60 * std::sin(2 * std::numbers::pi * 3 * place) * std::exp(-place) +
          20 * std::cos(2 * std::numbers::pi * 7 * place);
    }
  }
  return series;
}

} // namespace emeg
