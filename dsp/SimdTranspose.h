// Exchanges between the lanes of registers. Stands inside an unnamed namespace behind dsp/SimdVector.h, so nothing is
// included here.

using Lanes = std::make_integer_sequence<int, lanes>;

/// Parts and whole of `lanes` interleaved pairs.
template <int... i>
inline void deinterleave(const Vector& a, const Vector& b, Vector& first, Vector& second,
                         std::integer_sequence<int, i...>) {
  first = __builtin_shufflevector(a, b, (2 * i)...);
  second = __builtin_shufflevector(a, b, (2 * i + 1)...);
}

template <int... i>
inline void interleave(const Vector& first, const Vector& second, Vector& a, Vector& b,
                       std::integer_sequence<int, i...>) {
  a = __builtin_shufflevector(first, second, (i / 2 + i % 2 * lanes)...);
  b = __builtin_shufflevector(first, second, (i / 2 + lanes / 2 + i % 2 * lanes)...);
}

/// Reads `lanes` pairs apart, and writes them as pairs.
inline void loadPairs(const double* from, Vector& first, Vector& second) {
  deinterleave(load(from), load(from + lanes), first, second, Lanes{});
}

inline void storePairs(const Vector& first, const Vector& second, double* to) {
  Vector a;
  Vector b;
  interleave(first, second, a, b, Lanes{});
  store(a, to);
  store(b, to + lanes);
}

template <int... i>
inline Vector reversed(const Vector& v, std::integer_sequence<int, i...>) {
  return __builtin_shufflevector(v, v, (lanes - 1 - i)...);
}

inline Vector reversed(const Vector& v) {
  return reversed(v, Lanes{});
}

/// Of every square of 2 x 2 blocks of `distance` lanes, exchanges the two that lie off the diagonal.
template <int distance, int... i>
inline void exchangeBlocks(Vector& upper, Vector& lower, std::integer_sequence<int, i...>) {
  const Vector a = upper;
  const Vector b = lower;
  upper = __builtin_shufflevector(a, b, ((i & distance) != 0 ? lanes + i - distance : i)...);
  lower = __builtin_shufflevector(a, b, ((i & distance) != 0 ? lanes + i : i + distance)...);
}

/// Lane i of register k becomes lane k of register i.
template <int distance = lanes / 2>
inline void transpose(Vector (&rows)[lanes]) {
  if constexpr (distance > 0) {
    for (int k = 0; k < lanes; ++k)
      if ((k & distance) == 0) exchangeBlocks<distance>(rows[k], rows[k + distance], Lanes{});
    transpose<distance / 2>(rows);
  }
}
