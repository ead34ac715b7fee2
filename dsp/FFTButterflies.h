#pragma once

#include "dsp/FFTTwiddles.h"

#include <cstddef>
#include <cstdint>
#include <utility>

/// Conjugate-pair split-radix butterflies, decimation in time, one code for both directions. (Kamar,
/// Elcherif: Conjugate pair fast Fourier transform, Electronics Letters 25, 1989; Sorensen, Heideman, Burrus:
/// On computing the split-radix FFT, IEEE ASSP 34, 1986.)
///
/// A transform of n points of x is made from those of x[2t] (half), x[4t + 1] and x[4t - 1] (the two
/// quarters). The quarters' twiddles are conjugates of each other, so that one cosine and one sine serve
/// both.
///
/// Data lie in bit-reversed order. Sub-transforms of the samples r, r + M, r + 2M ... with r >= 0 form blocks
/// of kind A: half, then quarter 4t + 1, then quarter 4t - 1. Those with r < 0 start one sample into their
/// block and form blocks of kind B: quarter 4t + 1, quarter 4t - 1, then half.
namespace emeg {

enum class Direction { Forward, Inverse };
enum class BlockKind { A, B };

struct ComplexValue {
  double re;
  double im;
};

/// v exp(-i a) forward, v exp(+i a) inverse.
template <Direction direction>
inline ComplexValue turn(ComplexValue v, double cosine, double sine) {
  if constexpr (direction == Direction::Forward)
    return {v.re * cosine + v.im * sine, v.im * cosine - v.re * sine};
  else
    return {v.re * cosine - v.im * sine, v.im * cosine + v.re * sine};
}

/// The same by an eighth of a turn.
template <Direction direction>
inline ComplexValue turnEighth(ComplexValue v) {
  constexpr double c = oddCosines[0];
  if constexpr (direction == Direction::Forward)
    return {(v.re + v.im) * c, (v.im - v.re) * c};
  else
    return {(v.re - v.im) * c, (v.im + v.re) * c};
}

constexpr Direction opposite(Direction direction) {
  return direction == Direction::Forward ? Direction::Inverse : Direction::Forward;
}

/// One L-shaped butterfly at `x`, the first of four points that lie `quarter` doubles apart. `rotate` and
/// `rotateBack` apply the twiddle of the quarter 4t + 1 and its conjugate.
template <Direction direction, BlockKind kind, typename Rotate, typename RotateBack>
inline void butterfly(double* x, std::ptrdiff_t quarter, Rotate rotate, RotateBack rotateBack) {
  const double* half = kind == BlockKind::A ? x : x + 2 * quarter;
  const double* quarters = kind == BlockKind::A ? x + 2 * quarter : x;
  const ComplexValue low{half[0], half[1]};
  const ComplexValue high{half[quarter], half[quarter + 1]};
  const ComplexValue plus = rotate(ComplexValue{quarters[0], quarters[1]});
  const ComplexValue minus = rotateBack(ComplexValue{quarters[quarter], quarters[quarter + 1]});
  const ComplexValue sum{plus.re + minus.re, plus.im + minus.im};
  const ComplexValue difference{plus.re - minus.re, plus.im - minus.im};
  x[0] = low.re + sum.re;
  x[1] = low.im + sum.im;
  x[2 * quarter] = low.re - sum.re;
  x[2 * quarter + 1] = low.im - sum.im;
  double* const ahead = direction == Direction::Forward ? x + quarter : x + 3 * quarter;
  double* const behind = direction == Direction::Forward ? x + 3 * quarter : x + quarter;
  ahead[0] = high.re + difference.im;
  ahead[1] = high.im - difference.re;
  behind[0] = high.re - difference.im;
  behind[1] = high.im + difference.re;
}

/// Butterfly with twiddle 1.
template <Direction direction, BlockKind kind>
inline void trivialButterfly(double* x, std::ptrdiff_t quarter) {
  const auto keep = [](ComplexValue v) { return v; };
  butterfly<direction, kind>(x, quarter, keep, keep);
}

template <Direction direction, BlockKind kind>
inline void twiddledButterfly(double* x, std::ptrdiff_t quarter, double cosine, double sine) {
  butterfly<direction, kind>(
      x, quarter, [=](ComplexValue v) { return turn<direction>(v, cosine, sine); },
      [=](ComplexValue v) { return turn<opposite(direction)>(v, cosine, sine); });
}

/// Butterfly k of a block of n points with everything about it known at compile time.
template <Direction direction, BlockKind kind, int n, int k>
inline void fixedButterfly(double* block) {
  constexpr std::ptrdiff_t quarter = n / 2;
  double* const x = block + std::ptrdiff_t{2} * k;
  if constexpr (k == 0) {
    trivialButterfly<direction, kind>(x, quarter);
  } else if constexpr (8 * k == n) {
    butterfly<direction, kind>(x, quarter, turnEighth<direction>, turnEighth<opposite(direction)>);
  } else {
    constexpr double cosine = kernelCosine<n, k>();
    constexpr double sine = kernelCosine<n, n / 4 - k>();
    twiddledButterfly<direction, kind>(x, quarter, cosine, sine);
  }
}

template <Direction direction, BlockKind kind, int n, int... k>
inline void fixedButterflies(double* block, std::integer_sequence<int, k...>) {
  (fixedButterfly<direction, kind, n, k>(block), ...);
}

/// The butterflies that make a block of n points from its three parts, as straight-line code.
template <Direction direction, BlockKind kind, int n>
inline void fixedPass(double* block) {
  fixedButterflies<direction, kind, n>(block, std::make_integer_sequence<int, n / 4>{});
}

/// Offsets in doubles of the three parts of a block of n points.
template <BlockKind kind>
struct PartOffsets {
  static constexpr int64_t half(int64_t n) { return kind == BlockKind::A ? 0 : n; }
  static constexpr int64_t quarterPlus(int64_t n) { return kind == BlockKind::A ? n : 0; }
  static constexpr int64_t quarterMinus(int64_t n) { return quarterPlus(n) + n / 2; }
};

} // namespace emeg
