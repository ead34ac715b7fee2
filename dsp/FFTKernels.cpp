#include "dsp/FFTKernels.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTTwiddles.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace emeg {

namespace {

#include "dsp/SplitRadix.h"

/// The butterflies of a block of 128 points and more: straight-line code of its own, so that the blocks that
/// contain it do not repeat it.
template <Direction direction, BlockKind kind, int n>
[[gnu::noinline]] void unrolledPass(double* block) {
  combineAll<direction, kind, n>(block, std::make_integer_sequence<int, n / 4>{});
}

/// Leaf blocks that longer transforms share.
template <Direction direction, BlockKind kind, int n>
[[gnu::noinline]] void leafBlock(double* block) {
  transformBlock<direction, kind, n>(block);
}

/// Transforms a block of 64 to 512 points from leaf blocks of 16 and 32 points.
template <Direction direction, BlockKind kind, int n>
void transformFromLeaves(double* block) {
  if constexpr (n <= 32) {
    leafBlock<direction, kind, n>(block);
  } else {
    transformFromLeaves<direction, kind, n / 2>(block + PartOffsets<kind>::half(n));
    transformFromLeaves<direction, BlockKind::A, n / 4>(block + PartOffsets<kind>::quarterPlus(n));
    transformFromLeaves<direction, BlockKind::B, n / 4>(block + PartOffsets<kind>::quarterMinus(n));
    unrolledPass<direction, kind, n>(block);
  }
}

constexpr int reverseBits(int i, int n) {
  int reversed = 0;
  for (int bit = 1; bit < n; bit *= 2) reversed = 2 * reversed + ((i & bit) != 0 ? 1 : 0);
  return reversed;
}

template <int n, int i>
void swapWithReversed(double* x) {
  constexpr int j = reverseBits(i, n);
  if constexpr (i < j) {
    std::swap(x[std::ptrdiff_t{2} * i], x[std::ptrdiff_t{2} * j]);
    std::swap(x[std::ptrdiff_t{2} * i + 1], x[std::ptrdiff_t{2} * j + 1]);
  }
}

template <int n, int... i>
void swapAll(double* x, std::integer_sequence<int, i...>) {
  (swapWithReversed<n, i>(x), ...);
}

/// Whole transform of 8 to 64 points: nothing but constants.
template <Direction direction, int n>
void transformSmall(double* x) {
  swapAll<n>(x, std::make_integer_sequence<int, n>{});
  transformBlock<direction, BlockKind::A, n>(x);
}

/// Whole transform of 128 to 512 points: the permutation comes from the table of its size.
template <Direction direction, int n>
void transformMiddle(double* x) {
  permuteToBitReversed(x, fftTables().bitReversalTable(std::countr_zero(static_cast<unsigned>(n))));
  transformFromLeaves<direction, BlockKind::A, n>(x);
}

} // namespace

void fft4(double*) {}

void fftForward8(double* points) {
  transformSmall<Direction::Forward, 8>(points);
}
void fftForward16(double* points) {
  transformSmall<Direction::Forward, 16>(points);
}
void fftForward32(double* points) {
  transformSmall<Direction::Forward, 32>(points);
}
void fftForward64(double* points) {
  transformSmall<Direction::Forward, 64>(points);
}
void fftForward128(double* points) {
  transformMiddle<Direction::Forward, 128>(points);
}
void fftForward256(double* points) {
  transformMiddle<Direction::Forward, 256>(points);
}
void fftForward512(double* points) {
  transformMiddle<Direction::Forward, 512>(points);
}

void fftInverse8(double* points) {
  transformSmall<Direction::Inverse, 8>(points);
}
void fftInverse16(double* points) {
  transformSmall<Direction::Inverse, 16>(points);
}
void fftInverse32(double* points) {
  transformSmall<Direction::Inverse, 32>(points);
}
void fftInverse64(double* points) {
  transformSmall<Direction::Inverse, 64>(points);
}
void fftInverse128(double* points) {
  transformMiddle<Direction::Inverse, 128>(points);
}
void fftInverse256(double* points) {
  transformMiddle<Direction::Inverse, 256>(points);
}
void fftInverse512(double* points) {
  transformMiddle<Direction::Inverse, 512>(points);
}

void fftForwardBlock16A(double* points) {
  leafBlock<Direction::Forward, BlockKind::A, 16>(points);
}
void fftForwardBlock16B(double* points) {
  leafBlock<Direction::Forward, BlockKind::B, 16>(points);
}
void fftForwardBlock32A(double* points) {
  leafBlock<Direction::Forward, BlockKind::A, 32>(points);
}
void fftForwardBlock32B(double* points) {
  leafBlock<Direction::Forward, BlockKind::B, 32>(points);
}
void fftForwardBlock64A(double* points) {
  transformBlock<Direction::Forward, BlockKind::A, 64>(points);
}
void fftForwardBlock64B(double* points) {
  transformBlock<Direction::Forward, BlockKind::B, 64>(points);
}

void fftInverseBlock16A(double* points) {
  leafBlock<Direction::Inverse, BlockKind::A, 16>(points);
}
void fftInverseBlock16B(double* points) {
  leafBlock<Direction::Inverse, BlockKind::B, 16>(points);
}
void fftInverseBlock32A(double* points) {
  leafBlock<Direction::Inverse, BlockKind::A, 32>(points);
}
void fftInverseBlock32B(double* points) {
  leafBlock<Direction::Inverse, BlockKind::B, 32>(points);
}
void fftInverseBlock64A(double* points) {
  transformBlock<Direction::Inverse, BlockKind::A, 64>(points);
}
void fftInverseBlock64B(double* points) {
  transformBlock<Direction::Inverse, BlockKind::B, 64>(points);
}

} // namespace emeg
