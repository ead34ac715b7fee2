// Exchanges between the lanes of registers. Stands inside an unnamed namespace behind dsp/SimdVector.h, so
// nothing is included here.

using Lanes = std::make_integer_sequence<int, lanes>;

/// Calls step(0) ... step(lanes - 1), unrolled, so that arrays of registers stay in registers.
template <class Step, int... i>
inline __attribute__((always_inline)) void forEachLane(const Step& step, std::integer_sequence<int, i...>) {
  (step(i), ...);
}

template <class Step>
inline __attribute__((always_inline)) void forEachLane(const Step& step) {
  forEachLane(step, Lanes{});
}

/// Of every square of 2 x 2 blocks of `distance` lanes, exchanges the two that lie off the diagonal.
template <int distance, int... i>
inline void exchangeBlocks(Vector& upper, Vector& lower, std::integer_sequence<int, i...>) {
  const Vector a = upper;
  const Vector b = lower;
  upper = __builtin_shufflevector(a, b, ((i & distance) != 0 ? lanes + i - distance : i)...);
  lower = __builtin_shufflevector(a, b, ((i & distance) != 0 ? lanes + i : i + distance)...);
}

template <int... i>
inline void deinterleave(Vector& a, Vector& b, std::integer_sequence<int, i...>) {
  const Vector first = __builtin_shufflevector(a, b, (2 * i)...);
  b = __builtin_shufflevector(a, b, (2 * i + 1)...);
  a = first;
}

template <int... i>
inline void interleave(Vector& a, Vector& b, std::integer_sequence<int, i...>) {
  const Vector lower = __builtin_shufflevector(a, b, (i / 2 + i % 2 * lanes)...);
  b = __builtin_shufflevector(a, b, (i / 2 + lanes / 2 + i % 2 * lanes)...);
  a = lower;
}

/// Reads `lanes` pairs apart, and writes them as pairs. Registers of four lanes do it in two steps that
/// compilers do not find by themselves, longer ones in one.
inline void loadPairs(const double* from, Vector& first, Vector& second) {
  first = load(from);
  second = load(from + lanes);
  if constexpr (lanes == 4) {
    exchangeBlocks<2>(first, second, Lanes{});
    exchangeBlocks<1>(first, second, Lanes{});
  } else {
    deinterleave(first, second, Lanes{});
  }
}

inline void storePairs(const Vector& first, const Vector& second, double* to) {
  Vector a = first;
  Vector b = second;
  if constexpr (lanes == 4) {
    exchangeBlocks<1>(a, b, Lanes{});
    exchangeBlocks<2>(a, b, Lanes{});
  } else {
    interleave(a, b, Lanes{});
  }
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

/// Lane i of register k becomes lane k of register i.
template <int distance = lanes / 2>
inline void transpose(Vector (&rows)[lanes]) {
  if constexpr (distance > 0) {
    forEachLane([&](int k) {
      if ((k & distance) == 0) exchangeBlocks<distance>(rows[k], rows[k + distance], Lanes{});
    });
    transpose<distance / 2>(rows);
  }
}
