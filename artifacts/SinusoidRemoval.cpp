#include "artifacts/SinusoidRemoval.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace emeg {

namespace {

constexpr double twoPi = 6.283185307179586;

bool isUsable(double frequency, double cyclesPerSample) {
  return std::isfinite(frequency) && std::isfinite(cyclesPerSample) && frequency > 0.0 &&
         cyclesPerSample > 0.0;
}

} // namespace

int32_t notchSpanLengthOf(double notchFrequency, double samplingInterval, int64_t nrOfIntervalTimePoints) {
  const double w = samplingInterval * notchFrequency;
  if (!isUsable(notchFrequency, w) || nrOfIntervalTimePoints < 1) return 0;
  const double length = static_cast<double>(static_cast<float>(nrOfIntervalTimePoints));
  const double span = std::floor(std::floor(length * w) / w + 0.5);
  if (!std::isfinite(span) || span < 1.0) return 0;
  // The single-precision length may have been rounded up: never fit over more samples than there are.
  const int64_t longest = std::min<int64_t>(nrOfIntervalTimePoints, std::numeric_limits<int32_t>::max());
  return span >= static_cast<double>(longest) ? static_cast<int32_t>(longest) : static_cast<int32_t>(span);
}

SinusoidTables prepareSinusoidTables(std::span<const double> notchFrequencies, double samplingInterval,
                                     int64_t nrOfIntervalTimePoints) {
  const std::size_t nrOfNotches = notchFrequencies.size();
  SinusoidTables tables;
  tables.notchSpanLengths.resize(nrOfNotches, 0);
  tables.notchCosTables.resize(nrOfNotches);
  tables.notchSinTables.resize(nrOfNotches);
  if (nrOfIntervalTimePoints < 1) return tables;

  for (std::size_t k = 0; k < nrOfNotches; ++k) {
    const double w = samplingInterval * notchFrequencies[k];
    if (!isUsable(notchFrequencies[k], w)) continue;
    tables.notchSpanLengths[k] =
        notchSpanLengthOf(notchFrequencies[k], samplingInterval, nrOfIntervalTimePoints);
    std::vector<double>& cosTable = tables.notchCosTables[k];
    std::vector<double>& sinTable = tables.notchSinTables[k];
    cosTable.resize(static_cast<std::size_t>(nrOfIntervalTimePoints));
    sinTable.resize(static_cast<std::size_t>(nrOfIntervalTimePoints));
    for (std::size_t j = 0; j < cosTable.size(); ++j) {
      const double phase = static_cast<double>(j) * twoPi * w;
      cosTable[j] = std::cos(phase);
      sinTable[j] = std::sin(phase);
    }
  }
  return tables;
}

void removeSinusoids(double* channelSignal, int64_t n, std::span<const double> notchFrequencies,
                     double samplingInterval, std::span<const int32_t> notchSpanLengths) {
  const std::size_t nrOfNotches = std::min(notchFrequencies.size(), notchSpanLengths.size());
  for (std::size_t k = 0; k < nrOfNotches; ++k) {
    const int64_t spanLength = std::min<int64_t>(notchSpanLengths[k], n);
    if (spanLength < 1 || !isUsable(notchFrequencies[k], samplingInterval * notchFrequencies[k])) continue;

    const double omega = samplingInterval * notchFrequencies[k] * twoPi;
    double a = 0.0;
    double b = 0.0;
    for (int64_t j = 0; j < spanLength; ++j) {
      const double phase = static_cast<double>(j) * omega;
      a = a + std::cos(phase) * channelSignal[j];
      b = b + (0.0 - std::sin(phase) * channelSignal[j]);
    }
    a = a * 2.0 / static_cast<double>(spanLength);
    b = b * 2.0 / static_cast<double>(spanLength);
    for (int64_t j = 0; j < n; ++j) {
      const double phase = static_cast<double>(j) * omega;
      channelSignal[j] = channelSignal[j] + (std::sin(phase) * b - std::cos(phase) * a);
    }
  }
}

} // namespace emeg
