#pragma once

namespace emeg {

/// Complex transforms of fixed size, unscaled and in place, on interleaved points. Every size has its own
/// straight-line code, generated from one set of templates. Forward kernels use exp(-i...), inverse ones
/// exp(+i...).

/// Deliberately empty: four points are left as they are.
void fft4(double* points);

/// Whole transforms, natural order in and out.
void fftForward8(double* points);
void fftForward16(double* points);
void fftForward32(double* points);
void fftForward64(double* points);
void fftForward128(double* points);
void fftForward256(double* points);
void fftForward512(double* points);
void fftInverse8(double* points);
void fftInverse16(double* points);
void fftInverse32(double* points);
void fftInverse64(double* points);
void fftInverse128(double* points);
void fftInverse256(double* points);
void fftInverse512(double* points);

/// Leaf blocks of longer transforms: bit-reversed order in, natural order out. Kind A transforms samples r, r
/// + M, r + 2M ... with r >= 0, kind B those with r < 0, whose first sample lies at index M + r: the input of
/// kind B is delayed by one place in the circle (point t of the transform is the bit-reversed point t - 1).
void fftForwardBlock16A(double* points);
void fftForwardBlock16B(double* points);
void fftForwardBlock32A(double* points);
void fftForwardBlock32B(double* points);
void fftForwardBlock64A(double* points);
void fftForwardBlock64B(double* points);
void fftInverseBlock16A(double* points);
void fftInverseBlock16B(double* points);
void fftInverseBlock32A(double* points);
void fftInverseBlock32B(double* points);
void fftInverseBlock64A(double* points);
void fftInverseBlock64B(double* points);

} // namespace emeg
