#include "dsp/FFTKernels.h"
#include "dsp/FFTTables.h"
#include "dsp/FFTTwiddles.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/LongFFTPasses.h"
#include "dsp/RealFFT.h"

namespace emeg {

namespace {

template <Direction direction>
struct Kernels;

template <>
struct Kernels<Direction::Forward> {
  static constexpr auto whole8 = fftForward8, whole16 = fftForward16, whole32 = fftForward32,
                        whole64 = fftForward64, whole128 = fftForward128, whole256 = fftForward256,
                        whole512 = fftForward512;
};

template <>
struct Kernels<Direction::Inverse> {
  static constexpr auto whole8 = fftInverse8, whole16 = fftInverse16, whole32 = fftInverse32,
                        whole64 = fftInverse64, whole128 = fftInverse128, whole256 = fftInverse256,
                        whole512 = fftInverse512;
};

/// Inverse: with real and imaginary parts exchanged on the way in and out a forward transform is an inverse
/// one.
template <Direction direction>
void transformLong(double* x, int32_t log2m, FFTWorkspace& workspace) {
  constexpr bool swapped = direction == Direction::Inverse;
  const LongFFT fft = workspace.longFFT(log2m);
  const LongFFTPasses& passes = longFFTPasses();
  passes.transformColumns(fft, x, swapped);
  passes.transformRows(fft, x, swapped);
  passes.toNaturalOrder(fft, x);
}

template <Direction direction>
void transform(double* x, int32_t log2m, FFTWorkspace& workspace) {
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
    if (log2m >= FFTPlan::leastLog2m && log2m <= maxLog2FftSize)
      transformLong<direction>(x, log2m, workspace);
  }
}

} // namespace

void complexFFTForward(double* points, int32_t log2m, FFTWorkspace& workspace) {
  transform<Direction::Forward>(points, log2m, workspace);
}

void complexFFTInverse(double* points, int32_t log2m, FFTWorkspace& workspace) {
  transform<Direction::Inverse>(points, log2m, workspace);
}

} // namespace emeg
