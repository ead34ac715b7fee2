#pragma once

#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

/// Filters by their definitions, and what tests of filters measure.
namespace emeg::reference {

/// The signal at any position: odd reflection at the ends, then the last reflected value.
inline double continued(const std::vector<double>& x, int64_t position) {
  const auto last = static_cast<int64_t>(x.size()) - 1;
  const auto at = [&](int64_t p) { return x[static_cast<std::size_t>(p)]; };
  if (position < 0) return 2 * at(0) - at(std::min(-position, last));
  if (position > last) return 2 * at(last) - at(std::max<int64_t>(2 * last - position, 0));
  return at(position);
}

/// One output of a symmetric filter without delay.
inline double filteredSample(const std::vector<double>& x, const std::vector<double>& taps,
                             int64_t position) {
  const auto half = static_cast<int64_t>(taps.size()) / 2;
  long double sum = 0;
  for (std::size_t i = 0; i < taps.size(); ++i)
    sum += static_cast<long double>(taps[i]) *
           static_cast<long double>(continued(x, position - half + static_cast<int64_t>(i)));
  return static_cast<double>(sum);
}

inline std::vector<double> firFilterPlainly(const std::vector<double>& x, const std::vector<double>& taps) {
  std::vector<double> out(x.size());
  for (std::size_t p = 0; p < x.size(); ++p) out[p] = filteredSample(x, taps, static_cast<int64_t>(p));
  return out;
}

/// Amplitude of a symmetric filter at a frequency in cycles per sample.
inline double amplitudeAt(const std::vector<double>& taps, double frequency) {
  const std::size_t half = taps.size() / 2;
  double sum = taps[half];
  for (std::size_t i = 1; i <= half; ++i)
    sum += 2 * taps[half + i] * std::cos(2 * std::numbers::pi * frequency * static_cast<double>(i));
  return sum;
}

/// Amplitudes at k / (2 (size - 1)) cycles per sample, k = 0 ... size - 1: at least eight to a lobe.
inline std::vector<double> denseAmplitudes(const std::vector<double>& taps) {
  int32_t log2 = 10;
  while ((std::size_t{1} << log2) < 8 * taps.size()) ++log2;
  std::vector<double> spectrum(std::size_t{1} << log2);
  const std::size_t half = taps.size() / 2;
  for (std::size_t i = 0; i < taps.size(); ++i)
    spectrum[(i + spectrum.size() - half) % spectrum.size()] += taps[i];
  FFTWorkspace workspace;
  realFFTForward(spectrum.data(), log2, workspace);
  std::vector<double> amplitudes(spectrum.size() / 2 + 1);
  amplitudes.front() = spectrum[0];
  amplitudes.back() = spectrum[1];
  for (std::size_t k = 1; k + 1 < amplitudes.size(); ++k) amplitudes[k] = spectrum[2 * k];
  return amplitudes;
}

/// Amplitude and phase of a sinusoid (cycles per sample) in samples from `first` on, by least squares in a
/// Hann window.
inline std::complex<double> sinusoidIn(const std::vector<double>& x, std::size_t first, std::size_t count,
                                       double frequency) {
  std::complex<double> sum = 0;
  double weights = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double weight =
        1 - std::cos(2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / static_cast<double>(count));
    const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(first + i);
    sum += weight * x[first + i] * std::polar(1.0, -angle);
    weights += weight;
  }
  return 2.0 * sum / weights;
}

inline std::vector<double> sinusoid(std::size_t count, double frequency, double phase = 0) {
  std::vector<double> x(count);
  for (std::size_t i = 0; i < count; ++i)
    x[i] = std::cos(2 * std::numbers::pi * frequency * static_cast<double>(i) + phase);
  return x;
}

inline std::vector<double> whiteNoise(std::size_t count, uint32_t seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> x(count);
  for (double& value : x) value = normal(random);
  return x;
}

/// 10^(dB / 20).
inline double fromDecibels(double decibels) {
  return std::pow(10.0, decibels / 20);
}

} // namespace emeg::reference
