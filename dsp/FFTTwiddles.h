#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace emeg {

enum class Direction { Forward, Inverse };

constexpr Direction opposite(Direction direction) {
  return direction == Direction::Forward ? Direction::Inverse : Direction::Forward;
}

/// A twiddle's two numbers.
struct Turn {
  double cosine;
  double sine;
};

/// Which place a block has in a conjugate-pair split-radix transform (see dsp/SplitRadix.h).
enum class BlockKind { A, B };

namespace detail {

/// c[0] + c[1] z + c[2] z^2 ...
template <std::size_t n>
constexpr double polynomial(const std::array<double, n>& c, double z) {
  double value = c[n - 1];
  for (std::size_t i = n - 1; i > 0; --i) value = value * z + c[i - 1];
  return value;
}

/// Taylor coefficients: cos a = 1 - a^2/2 + a^4 (1/4! - a^2/6! ...), sin a = a + a^3 (-1/3! + a^2/5! ...).
inline constexpr std::array<double, 7> cosineTail = {
    1.0 / 24,        -1.0 / 720,          1.0 / 40320,          -1.0 / 3628800,
    1.0 / 479001600, -1.0 / 87178291200., 1.0 / 20922789888000.};
inline constexpr std::array<double, 8> sineTail = {
    -1.0 / 6,        1.0 / 120,         -1.0 / 5040,           1.0 / 362880,
    -1.0 / 39916800, 1.0 / 6227020800., -1.0 / 1307674368000., 1.0 / 355687428096000.};

} // namespace detail

/// cos(2 pi k / 2^log2N) for 0 <= k <= 2^log2N / 4, within one unit in the last place.
///
/// Octant symmetry keeps every angle below pi/4. The product of k with the head of 2 pi is exact, and what
/// rounding takes from the angle is added to the result to first order. Only plain arithmetic is used: the
/// same bits come out at compile time, at run time and on every processor, which the C library's functions do
/// not promise.
constexpr double cosineOfTurn(int64_t k, int32_t log2N) {
  constexpr double twoPiHead = 0x1.921fb4p+2;
  constexpr double twoPiRest = 0x1.4442d18469899p-22;

  const int64_t n = int64_t{1} << log2N;
  const bool firstOctant = 8 * k <= n;
  const double step = static_cast<double>(firstOctant ? k : n / 4 - k) / static_cast<double>(n);
  const double head = step * twoPiHead;
  const double angle = head + step * twoPiRest;
  const double lost = (head - angle) + step * twoPiRest;
  const double square = angle * angle;
  if (firstOctant) {
    const double half = 0.5 * square;
    const double coarse = 1.0 - half;
    const double tail = square * square * detail::polynomial(detail::cosineTail, square);
    return coarse + (((1.0 - coarse) - half) + (tail - angle * lost));
  }
  const double tail = angle * square * detail::polynomial(detail::sineTail, square);
  return angle + (tail + lost * (1.0 - 0.5 * square));
}

namespace detail {

constexpr std::array<double, 15> makeOddCosines() {
  std::array<double, 15> cosines{};
  std::size_t count = 0;
  for (int32_t log2L = 3; log2L <= 6; ++log2L)
    for (int64_t j = 1; j < (int64_t{1} << log2L) / 4; j += 2) cosines[count++] = cosineOfTurn(j, log2L);
  return cosines;
}

} // namespace detail

/// cos(2 pi j / L) for odd j < L/4, for L = 8, 16, 32 and 64 one after the other: the constants of the small
/// kernels.
inline constexpr std::array<double, 15> oddCosines = detail::makeOddCosines();

/// cos(2 pi k / n) of a kernel of n points, 0 <= k <= n/4, as a constant.
template <int n, int k>
constexpr double kernelCosine() {
  static_assert(n >= 4 && 0 <= k && k <= n / 4);
  if constexpr (k == 0) {
    return 1.0;
  } else if constexpr (k == n / 4) {
    return 0.0;
  } else if constexpr (k % 2 == 0) {
    return kernelCosine<n / 2, k / 2>();
  } else if constexpr (n <= 64) {
    return oddCosines[n / 8 - 1 + k / 2];
  } else {
    int32_t log2N = 0;
    while ((1 << log2N) < n) ++log2N;
    return cosineOfTurn(k, log2N);
  }
}

} // namespace emeg
