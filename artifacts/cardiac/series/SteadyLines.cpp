#include "artifacts/cardiac/series/SteadyLines.h"

#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace emeg {

namespace {

constexpr double blockHz = 2.5; // holds a harmonic of the fastest heart, and one slice frequency at most
constexpr size_t blocksOnEitherSide = 2;
constexpr double shortestSeconds = 10;

/// Packed real spectrum: bin k at 2k and 2k + 1.
double magnitudeAt(const std::vector<double>& spectrum, size_t bin) {
  return std::hypot(spectrum[2 * bin], spectrum[2 * bin + 1]);
}

double medianAround(const std::vector<double>& values, size_t index) {
  const size_t from = index > blocksOnEitherSide ? index - blocksOnEitherSide : 0;
  const size_t to = std::min(index + blocksOnEitherSide + 1, values.size());
  std::vector<double> around(values.begin() + static_cast<std::ptrdiff_t>(from),
                             values.begin() + static_cast<std::ptrdiff_t>(to));
  std::sort(around.begin(), around.end());
  return around[around.size() / 2];
}

} // namespace

std::vector<double> withoutSteadyLines(std::span<const double> samples, double rate, double highestHz) {
  std::vector<double> result(samples.begin(), samples.end());
  if (static_cast<double>(samples.size()) < shortestSeconds * rate) return result;
  const size_t length = std::bit_ceil(samples.size());
  const auto log2Length = static_cast<int32_t>(std::countr_zero(length));
  std::vector<double> spectrum(length, 0.0);
  std::copy(samples.begin(), samples.end(), spectrum.begin());
  FFTWorkspace workspace;
  realFFTForward(spectrum.data(), log2Length, workspace);

  const auto binsPerHz = static_cast<double>(length) / rate;
  const auto blockLength = std::max<size_t>(static_cast<size_t>(blockHz * binsPerHz), 1);
  const size_t nrOfBins = std::min(static_cast<size_t>(highestHz * binsPerHz), length / 2);
  std::vector<double> highest;
  for (size_t bin = 1; bin < nrOfBins; ++bin) {
    const size_t block = bin / blockLength;
    if (block >= highest.size()) highest.push_back(0);
    highest[block] = std::max(highest[block], magnitudeAt(spectrum, bin));
  }
  for (size_t bin = 1; bin < nrOfBins; ++bin) {
    const double limit = medianAround(highest, bin / blockLength);
    const double magnitude = magnitudeAt(spectrum, bin);
    if (magnitude <= limit) continue;
    spectrum[2 * bin] *= limit / magnitude;
    spectrum[2 * bin + 1] *= limit / magnitude;
  }
  realFFTInverse(spectrum.data(), log2Length, workspace);
  const double scale = 2 / static_cast<double>(length);
  for (size_t i = 0; i < result.size(); ++i) result[i] = spectrum[i] * scale;
  return result;
}

} // namespace emeg
