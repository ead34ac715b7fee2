// Accuracy at every size up to 2^24 values: minutes of reference computation and gigabytes of memory, so
// these tests stand in a program of their own.

#include "dsp/FFTWorkspace.h"
#include "dsp/RealFFT.h"
#include "tests/dsp/reference/SlowFourier.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace emeg {
namespace {

using reference::Wide;

constexpr long double twoPi = 6.283185307179586476925286766559005768394L;

Wide rootOfUnity(std::size_t k, std::size_t n) {
  const long double angle = twoPi * static_cast<long double>(k % n) / static_cast<long double>(n);
  return {std::cos(angle), -std::sin(angle)};
}

/// Signals whose spectra are known without computing them.
struct Known {
  std::string name;
  std::function<double(std::size_t j, std::size_t n)> sample;
  std::function<Wide(std::size_t bin, std::size_t n)> spectrum;
};

std::vector<Known> knownSignals() {
  const auto size = [](std::size_t n) { return static_cast<long double>(n); };
  return {{"impulse", [](std::size_t j, std::size_t) { return j == 5 ? 1.0 : 0.0; },
           [](std::size_t bin, std::size_t n) { return rootOfUnity(5 * bin, n); }},
          {"constant", [](std::size_t, std::size_t) { return 0.3; },
           [=](std::size_t bin, std::size_t n) {
             return bin == 0 ? Wide(size(n) * static_cast<long double>(0.3)) : Wide();
           }},
          {"alternating", [](std::size_t j, std::size_t) { return j % 2 == 0 ? 1.0 : -1.0; },
           [=](std::size_t bin, std::size_t n) { return bin == n / 2 ? Wide(size(n)) : Wide(); }},
          {"single bin",
           [](std::size_t j, std::size_t n) { return static_cast<double>(-rootOfUnity(3 * j, n).imag()); },
           [=](std::size_t bin, std::size_t n) { return bin == 3 ? Wide(0, -size(n) / 2) : Wide(); }}};
}

/// Length of the difference from the packed spectrum, relative to the spectrum's.
double spectrumError(const std::vector<double>& packed, const std::function<Wide(std::size_t)>& expected) {
  long double difference = 0;
  long double length = 0;
  const std::size_t half = packed.size() / 2;
  for (std::size_t k = 0; k <= half; ++k) {
    const Wide actual = k == 0      ? Wide(static_cast<long double>(packed[0]))
                        : k == half ? Wide(static_cast<long double>(packed[1]))
                                    : reference::pointOf(packed, k);
    difference += std::norm(actual - expected(k));
    length += std::norm(expected(k));
  }
  return static_cast<double>(std::sqrt(difference / length));
}

double roundTripError(const std::vector<double>& input, std::vector<double> spectrum, int32_t log2n) {
  FFTWorkspace workspace;
  realFFTInverse(spectrum.data(), log2n, workspace);
  long double difference = 0;
  long double length = 0;
  for (std::size_t j = 0; j < input.size(); ++j) {
    const long double wanted =
        static_cast<long double>(input[j]) * static_cast<long double>(input.size() / 2);
    const long double error = static_cast<long double>(spectrum[j]) - wanted;
    difference += error * error;
    length += wanted * wanted;
  }
  return static_cast<double>(std::sqrt(difference / length));
}

class LargestFFT : public testing::TestWithParam<int32_t> {};

TEST_P(LargestFFT, TransformsSignalsOfKnownSpectrumAndBack) {
  const int32_t log2n = GetParam();
  FFTWorkspace workspace;
  const std::size_t n = std::size_t{1} << log2n;
  for (const Known& known : knownSignals()) {
    std::vector<double> input(n);
    for (std::size_t j = 0; j < n; ++j) input[j] = known.sample(j, n);
    std::vector<double> spectrum = input;
    realFFTForward(spectrum.data(), log2n, workspace);
    EXPECT_LT(spectrumError(spectrum, [&](std::size_t bin) { return known.spectrum(bin, n); }),
              reference::tolerance(log2n))
        << known.name;
    EXPECT_LT(roundTripError(input, spectrum, log2n), reference::tolerance(log2n)) << known.name;
  }
}

TEST_P(LargestFFT, TransformsNoiseAndBack) {
  const int32_t log2n = GetParam();
  const std::vector<double> input = reference::random(std::size_t{1} << log2n, 1);
  std::vector<double> spectrum = input;
  FFTWorkspace workspace;
  realFFTForward(spectrum.data(), log2n, workspace);
  EXPECT_LT(reference::relativeError(spectrum, reference::packedSpectrum(input, false)),
            reference::tolerance(log2n));
  EXPECT_LT(roundTripError(input, spectrum, log2n), reference::tolerance(log2n));
}

INSTANTIATE_TEST_SUITE_P(Log2Size, LargestFFT, testing::Range(4, 25), testing::PrintToStringParamName());

} // namespace
} // namespace emeg
