#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// Plain Fourier transforms in long double to compare the fast ones with.
namespace emeg::reference {

using Wide = std::complex<long double>;

inline Wide pointOf(const std::vector<double>& interleaved, std::size_t j) {
  return {static_cast<long double>(interleaved[2 * j]), static_cast<long double>(interleaved[2 * j + 1])};
}

/// exp(sign 2 pi i k / n) for k < n.
inline std::vector<Wide> rootsOfUnity(std::size_t n, int sign) {
  constexpr long double twoPi = 6.283185307179586476925286766559005768394L;
  std::vector<Wide> roots(n);
  for (std::size_t k = 0; k < n; ++k) {
    const long double angle = twoPi * static_cast<long double>(k) / static_cast<long double>(n);
    roots[k] = Wide(std::cos(angle), static_cast<long double>(sign) * std::sin(angle));
  }
  return roots;
}

/// The definition: X[k] = sum over j of x[j] exp(sign 2 pi i j k / n).
inline std::vector<Wide> directDFT(const std::vector<Wide>& x, int sign) {
  const std::size_t n = x.size();
  const std::vector<Wide> roots = rootsOfUnity(n, sign);
  std::vector<Wide> result(n);
  for (std::size_t k = 0; k < n; ++k) {
    long double re = 0;
    long double im = 0;
    for (std::size_t j = 0; j < n; ++j) {
      const Wide& w = roots[j * k % n];
      re += x[j].real() * w.real() - x[j].imag() * w.imag();
      im += x[j].real() * w.imag() + x[j].imag() * w.real();
    }
    result[k] = Wide(re, im);
  }
  return result;
}

inline void recursiveFFT(const Wide* x, std::size_t stride, std::size_t n, const std::vector<Wide>& roots,
                         Wide* result) {
  if (n == 1) {
    result[0] = x[0];
    return;
  }
  const std::size_t half = n / 2;
  recursiveFFT(x, 2 * stride, half, roots, result);
  recursiveFFT(x + stride, 2 * stride, half, roots, result + half);
  for (std::size_t k = 0; k < half; ++k) {
    const Wide w = roots[k * stride];
    const Wide odd = result[half + k];
    const Wide turned(odd.real() * w.real() - odd.imag() * w.imag(),
                      odd.real() * w.imag() + odd.imag() * w.real());
    result[half + k] = result[k] - turned;
    result[k] += turned;
  }
}

/// The textbook radix-2 transform, for lengths where the definition takes too long.
inline std::vector<Wide> recursiveFFT(const std::vector<Wide>& x, int sign) {
  std::vector<Wide> result(x.size());
  recursiveFFT(x.data(), 1, x.size(), rootsOfUnity(x.size(), sign), result.data());
  return result;
}

inline std::vector<Wide> asComplex(const std::vector<double>& interleaved) {
  std::vector<Wide> result(interleaved.size() / 2);
  for (std::size_t j = 0; j < result.size(); ++j) result[j] = pointOf(interleaved, j);
  return result;
}

inline std::vector<double> random(std::size_t count, uint32_t seed) {
  std::mt19937 generator(seed);
  std::vector<double> values(count);
  for (double& value : values) value = static_cast<double>(generator()) / 2147483648.0 - 1.0;
  return values;
}

/// Length of the difference of interleaved points and their reference, relative to the length of the
/// reference.
inline double relativeError(const std::vector<double>& interleaved, const std::vector<Wide>& expected) {
  long double difference = 0;
  long double length = 0;
  for (std::size_t k = 0; k < expected.size(); ++k) {
    difference += std::norm(pointOf(interleaved, k) - expected[k]);
    length += std::norm(expected[k]);
  }
  return static_cast<double>(std::sqrt(length > 0 ? difference / length : difference));
}

/// A real signal's packed spectrum as interleaved points: DC and Nyquist share point 0.
inline std::vector<Wide> packedSpectrum(const std::vector<double>& signal, bool direct) {
  std::vector<Wide> x(signal.begin(), signal.end());
  std::vector<Wide> full = direct ? directDFT(x, -1) : recursiveFFT(x, -1);
  const std::size_t half = signal.size() / 2;
  std::vector<Wide> packed(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(half));
  packed[0] = Wide(full[0].real(), full[half].real());
  return packed;
}

/// What a transform of n points may be wrong by, relative to the length of its result.
inline double tolerance(int32_t log2n) {
  return 4e-16 * log2n;
}

} // namespace emeg::reference
