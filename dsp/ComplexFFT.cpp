#include "dsp/FFTButterflies.h"
#include "dsp/FFTKernels.h"
#include "dsp/FFTTables.h"
#include "dsp/RealFFT.h"

#include <vector>

namespace emeg {

namespace {

template <Direction direction>
struct Kernels;

template <>
struct Kernels<Direction::Forward> {
  static constexpr auto whole8 = fftForward8, whole16 = fftForward16, whole32 = fftForward32,
                        whole64 = fftForward64, whole128 = fftForward128, whole256 = fftForward256,
                        whole512 = fftForward512, block32A = fftForwardBlock32A,
                        block32B = fftForwardBlock32B, block64A = fftForwardBlock64A,
                        block64B = fftForwardBlock64B;
};

template <>
struct Kernels<Direction::Inverse> {
  static constexpr auto whole8 = fftInverse8, whole16 = fftInverse16, whole32 = fftInverse32,
                        whole64 = fftInverse64, whole128 = fftInverse128, whole256 = fftInverse256,
                        whole512 = fftInverse512, block32A = fftInverseBlock32A,
                        block32B = fftInverseBlock32B, block64A = fftInverseBlock64A,
                        block64B = fftInverseBlock64B;
};

/// Transforms the leaves: 64-point blocks wherever the decomposition reaches them, and 32-point blocks where
/// a quarter of a 128-point block is left over.
template <Direction direction>
void transformLeaves(double* x, const std::vector<uint32_t>& bitReversals, int32_t log2m) {
  const std::size_t nrOf64 = std::size_t{1} << (log2m - 6);
  const std::size_t nrOf32 = std::size_t{1} << (log2m - 5);
  const std::size_t last64 = splitRadixCounts[static_cast<std::size_t>(log2m - 6)];
  const std::size_t last32 = splitRadixCounts[static_cast<std::size_t>(log2m - 5)];
  Kernels<direction>::block64A(x);
  for (std::size_t r = 1; r <= last64; ++r) {
    Kernels<direction>::block64A(x + bitReversals[r]);
    Kernels<direction>::block64B(x + bitReversals[nrOf64 - r]);
  }
  for (std::size_t r = last64 + 1; r <= last32; ++r) {
    Kernels<direction>::block32A(x + bitReversals[r]);
    Kernels<direction>::block32B(x + bitReversals[nrOf32 - r]);
  }
}

/// The butterflies of a block of n points with twiddles from the shared cosine table.
template <Direction direction, BlockKind kind>
void tablePass(double* block, int64_t n) {
  const FFTTables& tables = fftTables();
  const int64_t stride = tables.cosinePeriod / n;
  const double* cosine = tables.cosines.data();
  const double* sine = cosine + tables.cosinePeriod / 4;
  trivialButterfly<direction, kind>(block, n / 2);
  for (int64_t k = 1; k < n / 4; ++k) {
    cosine += stride;
    sine -= stride;
    twiddledButterfly<direction, kind>(block + 2 * k, n / 2, *cosine, *sine);
  }
}

/// All passes that make a block of 2^log2n points from its transformed leaves. Part by part, so that short
/// blocks are finished while they are in the cache.
template <Direction direction, BlockKind kind>
void combineLeaves(double* block, int32_t log2n) {
  if (log2n < 7) return;
  const int64_t n = int64_t{1} << log2n;
  combineLeaves<direction, kind>(block + PartOffsets<kind>::half(n), log2n - 1);
  combineLeaves<direction, BlockKind::A>(block + PartOffsets<kind>::quarterPlus(n), log2n - 2);
  combineLeaves<direction, BlockKind::B>(block + PartOffsets<kind>::quarterMinus(n), log2n - 2);
  switch (log2n) {
  case 7:
    return unrolledPass<direction, kind, 128>(block);
  case 8:
    return unrolledPass<direction, kind, 256>(block);
  case 9:
    return unrolledPass<direction, kind, 512>(block);
  default:
    return tablePass<direction, kind>(block, n);
  }
}

template <Direction direction>
void transformLarge(double* x, int32_t log2m) {
  const std::vector<uint32_t>& bitReversals = bitReversalTable(log2m);
  makeCosineTable(log2m);
  permuteToBitReversed(x, bitReversals);
  transformLeaves<direction>(x, bitReversals, log2m);
  combineLeaves<direction, BlockKind::A>(x, log2m);
}

template <Direction direction>
void transform(double* x, int32_t log2m) {
  switch (log2m) {
  case 2:
    return fft4(x);
  case 3:
    return Kernels<direction>::whole8(x);
  case 4:
    return Kernels<direction>::whole16(x);
  case 5:
    return Kernels<direction>::whole32(x);
  case 6:
    return Kernels<direction>::whole64(x);
  case 7:
    return Kernels<direction>::whole128(x);
  case 8:
    return Kernels<direction>::whole256(x);
  case 9:
    return Kernels<direction>::whole512(x);
  default:
    if (log2m >= 10 && log2m <= maxLog2FftSize) transformLarge<direction>(x, log2m);
  }
}

} // namespace

void complexFFTForward(double* points, int32_t log2m) {
  transform<Direction::Forward>(points, log2m);
}

void complexFFTInverse(double* points, int32_t log2m) {
  transform<Direction::Inverse>(points, log2m);
}

} // namespace emeg
