#include "dsp/FFTKernels.h"

#include "dsp/FFTTables.h"

#include <array>
#include <bit>
#include <utility>
#include <vector>

namespace emeg {

template <Direction direction, BlockKind kind, int n>
void unrolledPass(double* block) {
  fixedPass<direction, kind, n>(block);
}

namespace {

/// Transforms a block of n points in bit-reversed order.
template <Direction direction, BlockKind kind, int n>
void transformBlock(double* x) {
  if constexpr (n == 2) {
    // Kind B holds the second sample first.
    const double* first = kind == BlockKind::A ? x : x + 2;
    const double* second = kind == BlockKind::A ? x + 2 : x;
    const ComplexValue sum{first[0] + second[0], first[1] + second[1]};
    const ComplexValue difference{first[0] - second[0], first[1] - second[1]};
    x[0] = sum.re;
    x[1] = sum.im;
    x[2] = difference.re;
    x[3] = difference.im;
  } else if constexpr (n > 2) {
    transformBlock<direction, kind, n / 2>(x + PartOffsets<kind>::half(n));
    transformBlock<direction, BlockKind::A, n / 4>(x + PartOffsets<kind>::quarterPlus(n));
    transformBlock<direction, BlockKind::B, n / 4>(x + PartOffsets<kind>::quarterMinus(n));
    if constexpr (n >= 128)
      unrolledPass<direction, kind, n>(x);
    else
      fixedPass<direction, kind, n>(x);
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
  permuteToBitReversed(x, bitReversalTable(std::countr_zero(static_cast<unsigned>(n))));
  transformBlock<direction, BlockKind::A, n>(x);
}

} // namespace

template void unrolledPass<Direction::Forward, BlockKind::A, 128>(double*);
template void unrolledPass<Direction::Forward, BlockKind::B, 128>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::A, 128>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::B, 128>(double*);
template void unrolledPass<Direction::Forward, BlockKind::A, 256>(double*);
template void unrolledPass<Direction::Forward, BlockKind::B, 256>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::A, 256>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::B, 256>(double*);
template void unrolledPass<Direction::Forward, BlockKind::A, 512>(double*);
template void unrolledPass<Direction::Forward, BlockKind::B, 512>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::A, 512>(double*);
template void unrolledPass<Direction::Inverse, BlockKind::B, 512>(double*);

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
  transformBlock<Direction::Forward, BlockKind::A, 16>(points);
}
void fftForwardBlock16B(double* points) {
  transformBlock<Direction::Forward, BlockKind::B, 16>(points);
}
void fftForwardBlock32A(double* points) {
  transformBlock<Direction::Forward, BlockKind::A, 32>(points);
}
void fftForwardBlock32B(double* points) {
  transformBlock<Direction::Forward, BlockKind::B, 32>(points);
}
void fftForwardBlock64A(double* points) {
  transformBlock<Direction::Forward, BlockKind::A, 64>(points);
}
void fftForwardBlock64B(double* points) {
  transformBlock<Direction::Forward, BlockKind::B, 64>(points);
}

void fftInverseBlock16A(double* points) {
  transformBlock<Direction::Inverse, BlockKind::A, 16>(points);
}
void fftInverseBlock16B(double* points) {
  transformBlock<Direction::Inverse, BlockKind::B, 16>(points);
}
void fftInverseBlock32A(double* points) {
  transformBlock<Direction::Inverse, BlockKind::A, 32>(points);
}
void fftInverseBlock32B(double* points) {
  transformBlock<Direction::Inverse, BlockKind::B, 32>(points);
}
void fftInverseBlock64A(double* points) {
  transformBlock<Direction::Inverse, BlockKind::A, 64>(points);
}
void fftInverseBlock64B(double* points) {
  transformBlock<Direction::Inverse, BlockKind::B, 64>(points);
}

} // namespace emeg
