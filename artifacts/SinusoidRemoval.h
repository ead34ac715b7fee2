#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// What the removal of line sinusoids prepares once per run, one entry per notch frequency.
struct SinusoidTables {
  /// Number of samples that hold the largest whole number of periods; 0: no whole period fits, or the
  /// frequency is not a positive number, and the notch is skipped.
  std::vector<int32_t> notchSpanLengths;
  /// cos and sin of 2 pi f j dt for j = 0 ... nrOfIntervalTimePoints - 1 (empty where the frequency is
  /// unusable).
  std::vector<std::vector<double>> notchCosTables;
  std::vector<std::vector<double>> notchSinTables;
};

/// The span length of one notch frequency (Hz).
int32_t notchSpanLengthOf(double notchFrequency, double samplingInterval, int64_t nrOfIntervalTimePoints);

/// Span lengths and tables for the notch frequencies (Hz) of a channel of `nrOfIntervalTimePoints` samples
/// that are `samplingInterval` seconds apart.
SinusoidTables prepareSinusoidTables(std::span<const double> notchFrequencies, double samplingInterval,
                                     int64_t nrOfIntervalTimePoints);

/// Subtracts one sinusoid per notch frequency, in order, from the `n` samples of a channel. Each is fitted by
/// projection over the first `notchSpanLengths[k]` samples and subtracted from all of them; a span length
/// below 1 skips the notch.
void removeSinusoids(double* channelSignal, int64_t n, std::span<const double> notchFrequencies,
                     double samplingInterval, std::span<const int32_t> notchSpanLengths);

} // namespace emeg
