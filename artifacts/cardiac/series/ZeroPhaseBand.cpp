#include "artifacts/cardiac/series/ZeroPhaseBand.h"

#include "dsp/VectorKernels.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double halfLength = 0.3; // seconds
constexpr double pi = std::numbers::pi;

/// The samples with as many zeros in front and behind.
std::vector<double> padded(std::span<const double> samples, size_t count) {
  std::vector<double> all(samples.size() + 2 * count, 0.0);
  std::copy(samples.begin(), samples.end(), all.begin() + static_cast<std::ptrdiff_t>(count));
  return all;
}

/// An ideal low-pass at a frequency in cycles per sample.
double sincAt(double frequency, double k) {
  return k == 0 ? 2 * frequency : std::sin(2 * pi * frequency * k) / (pi * k);
}

} // namespace

std::vector<double> bandOf(std::span<const double> samples, double rate, double lowHz, double highHz) {
  const auto half = static_cast<int>(std::floor(halfLength * rate + 0.5));
  std::vector<double> taps;
  for (int k = -half; k <= half; ++k) {
    const double window = 0.54 + 0.46 * std::cos(pi * k / (half + 1));
    taps.push_back(window * (sincAt(highHz / rate, k) - sincAt(lowHz / rate, k)));
  }
  std::vector<double> band(samples.size());
  const std::vector<double> all = padded(samples, static_cast<size_t>(half));
  vectorKernels().slidingDot(all.data(), taps.data(), static_cast<int64_t>(taps.size()),
                             static_cast<int64_t>(band.size()), band.data());
  return band;
}

std::vector<double> centredMean(std::span<const double> samples, double rate, double seconds) {
  const auto half = static_cast<size_t>(std::max(std::floor(seconds * rate / 2 + 0.5), 0.0));
  const size_t taps = 2 * half + 1;
  std::vector<double> means(samples.size());
  const std::vector<double> all = padded(samples, half);
  vectorKernels().slidingSum(all.data(), static_cast<int64_t>(taps), static_cast<int64_t>(means.size()),
                             means.data());
  for (double& mean : means) mean /= static_cast<double>(taps);
  return means;
}

} // namespace emeg
