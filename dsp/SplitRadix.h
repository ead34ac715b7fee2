// Conjugate-pair split-radix butterflies and blocks, one code for both directions and for every kind of
// number: T is a double, or a register whose lanes hold the same point of several transforms. (Kamar,
// Elcherif: Conjugate pair fast Fourier transform, Electronics Letters 25, 1989; Sorensen, Heideman, Burrus:
// On computing the split-radix FFT, IEEE ASSP 34, 1986.) Stands inside an unnamed namespace, so that code for
// different processors stays apart: nothing is included here, and dsp/FFTTwiddles.h must have been.
//
// A transform of n points of x is made from those of x[2t] (half), x[4t + 1] and x[4t - 1] (the two
// quarters). The quarters' twiddles are conjugates of each other, so that one cosine and one sine serve both.
// Read backwards, the same graph takes natural order apart: the spectrum's bins 2t, 4t + 1 and 4t - 1 come
// from shorter transforms.
//
// One side lies in bit-reversed order. Sub-transforms of the samples r, r + M, r + 2M ... with r >= 0 form
// blocks of kind A: half, then quarter 4t + 1, then quarter 4t - 1. Those with r < 0 start one sample into
// their block and form blocks of kind B: quarter 4t + 1, quarter 4t - 1, then half.
//
// Points are pairs of T: real part, imaginary part.

template <class T>
struct Point {
  T re;
  T im;
};

/// v exp(-i a) forward, v exp(+i a) inverse.
template <Direction direction, class T, class Number>
inline Point<T> turn(const Point<T>& v, const Number& cosine, const Number& sine) {
  if constexpr (direction == Direction::Forward)
    return {v.re * cosine + v.im * sine, v.im * cosine - v.re * sine};
  else
    return {v.re * cosine - v.im * sine, v.im * cosine + v.re * sine};
}

/// The same by an eighth of a turn.
template <Direction direction, class T>
inline Point<T> turnEighth(const Point<T>& v) {
  constexpr double c = oddCosines[0];
  if constexpr (direction == Direction::Forward)
    return {(v.re + v.im) * c, (v.im - v.re) * c};
  else
    return {(v.re - v.im) * c, (v.im + v.re) * c};
}

/// The twiddles of butterfly k of n when everything about it is known at compile time.
template <int n, int k>
struct FixedTwiddle {
  template <Direction direction, class T>
  Point<T> apply(const Point<T>& v) const {
    if constexpr (k == 0)
      return v;
    else if constexpr (8 * k == n)
      return turnEighth<direction>(v);
    else
      return turn<direction>(v, kernelCosine<n, k>(), kernelCosine<n, n / 4 - k>());
  }
};

struct Twiddle {
  double cosine;
  double sine;

  template <Direction direction, class T>
  Point<T> apply(const Point<T>& v) const {
    return turn<direction>(v, cosine, sine);
  }
};

/// One L-shaped butterfly at `x`, the first of four points that lie `quarter` values apart: makes four bins
/// of the block from its parts.
template <Direction direction, BlockKind kind, class T, class Turn>
inline void combine(T* x, std::ptrdiff_t quarter, const Turn& twiddle) {
  const T* half = kind == BlockKind::A ? x : x + 2 * quarter;
  const T* quarters = kind == BlockKind::A ? x + 2 * quarter : x;
  const Point<T> low{half[0], half[1]};
  const Point<T> high{half[quarter], half[quarter + 1]};
  const Point<T> plus = twiddle.template apply<direction>(Point<T>{quarters[0], quarters[1]});
  const Point<T> minus =
      twiddle.template apply<opposite(direction)>(Point<T>{quarters[quarter], quarters[quarter + 1]});
  const Point<T> sum{plus.re + minus.re, plus.im + minus.im};
  const Point<T> difference{plus.re - minus.re, plus.im - minus.im};
  x[0] = low.re + sum.re;
  x[1] = low.im + sum.im;
  x[2 * quarter] = low.re - sum.re;
  x[2 * quarter + 1] = low.im - sum.im;
  T* const ahead = direction == Direction::Forward ? x + quarter : x + 3 * quarter;
  T* const behind = direction == Direction::Forward ? x + 3 * quarter : x + quarter;
  ahead[0] = high.re + difference.im;
  ahead[1] = high.im - difference.re;
  behind[0] = high.re - difference.im;
  behind[1] = high.im + difference.re;
}

/// The same read backwards: takes four samples of the block apart into its parts.
template <Direction direction, BlockKind kind, class T, class Turn>
inline void separate(T* x, std::ptrdiff_t quarter, const Turn& twiddle) {
  const Point<T> sum0{x[0] + x[2 * quarter], x[1] + x[2 * quarter + 1]};
  const Point<T> difference0{x[0] - x[2 * quarter], x[1] - x[2 * quarter + 1]};
  const Point<T> sum1{x[quarter] + x[3 * quarter], x[quarter + 1] + x[3 * quarter + 1]};
  const T* const ahead = direction == Direction::Forward ? x + quarter : x + 3 * quarter;
  const T* const behind = direction == Direction::Forward ? x + 3 * quarter : x + quarter;
  const Point<T> difference1{ahead[0] - behind[0], ahead[1] - behind[1]};
  const Point<T> plus = twiddle.template apply<direction>(
      Point<T>{difference0.re + difference1.im, difference0.im - difference1.re});
  const Point<T> minus = twiddle.template apply<opposite(direction)>(
      Point<T>{difference0.re - difference1.im, difference0.im + difference1.re});
  T* half = kind == BlockKind::A ? x : x + 2 * quarter;
  T* quarters = kind == BlockKind::A ? x + 2 * quarter : x;
  half[0] = sum0.re;
  half[1] = sum0.im;
  half[quarter] = sum1.re;
  half[quarter + 1] = sum1.im;
  quarters[0] = plus.re;
  quarters[1] = plus.im;
  quarters[quarter] = minus.re;
  quarters[quarter + 1] = minus.im;
}

/// All butterflies of a block of n points, as straight-line code.
template <Direction direction, BlockKind kind, int n, class T, int... k>
inline void combineAll(T* block, std::integer_sequence<int, k...>) {
  (combine<direction, kind>(block + 2 * k, n / 2, FixedTwiddle<n, k>{}), ...);
}

template <Direction direction, BlockKind kind, int n, class T, int... k>
inline void separateAll(T* block, std::integer_sequence<int, k...>) {
  (separate<direction, kind>(block + 2 * k, n / 2, FixedTwiddle<n, k>{}), ...);
}

/// Offsets in values of the three parts of a block of n points.
template <BlockKind kind>
struct PartOffsets {
  static constexpr int64_t half(int64_t n) { return kind == BlockKind::A ? 0 : n; }
  static constexpr int64_t quarterPlus(int64_t n) { return kind == BlockKind::A ? n : 0; }
  static constexpr int64_t quarterMinus(int64_t n) { return quarterPlus(n) + n / 2; }
};

/// Two points. Kind B holds the one that comes second first, on the side that lies in bit-reversed order.
template <BlockKind kind, bool reversedIn, class T>
inline void transformTwo(T* x) {
  T* const reversed0 = kind == BlockKind::A ? x : x + 2;
  T* const reversed1 = kind == BlockKind::A ? x + 2 : x;
  const T* const first = reversedIn ? reversed0 : x;
  const T* const second = reversedIn ? reversed1 : x + 2;
  const Point<T> sum{first[0] + second[0], first[1] + second[1]};
  const Point<T> difference{first[0] - second[0], first[1] - second[1]};
  T* const bin0 = reversedIn ? x : reversed0;
  T* const bin1 = reversedIn ? x + 2 : reversed1;
  bin0[0] = sum.re;
  bin0[1] = sum.im;
  bin1[0] = difference.re;
  bin1[1] = difference.im;
}

/// Transforms a block of n points: bit-reversed order in, natural order out.
template <Direction direction, BlockKind kind, int n, class T>
inline void transformBlock(T* x) {
  if constexpr (n == 2) {
    transformTwo<kind, true>(x);
  } else if constexpr (n > 2) {
    transformBlock<direction, kind, n / 2>(x + PartOffsets<kind>::half(n));
    transformBlock<direction, BlockKind::A, n / 4>(x + PartOffsets<kind>::quarterPlus(n));
    transformBlock<direction, BlockKind::B, n / 4>(x + PartOffsets<kind>::quarterMinus(n));
    combineAll<direction, kind, n>(x, std::make_integer_sequence<int, n / 4>{});
  }
}

/// Transforms a block of n points: natural order in, bit-reversed order out.
template <Direction direction, BlockKind kind, int n, class T>
inline void transformBlockToReversed(T* x) {
  if constexpr (n == 2) {
    transformTwo<kind, false>(x);
  } else if constexpr (n > 2) {
    separateAll<direction, kind, n>(x, std::make_integer_sequence<int, n / 4>{});
    transformBlockToReversed<direction, kind, n / 2>(x + PartOffsets<kind>::half(n));
    transformBlockToReversed<direction, BlockKind::A, n / 4>(x + PartOffsets<kind>::quarterPlus(n));
    transformBlockToReversed<direction, BlockKind::B, n / 4>(x + PartOffsets<kind>::quarterMinus(n));
  }
}
