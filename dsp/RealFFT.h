#pragma once

#include <cstdint>

namespace emeg {

/// Real and complex discrete Fourier transforms of power-of-two length, in place, in double precision.
///
/// Sizes are base-2 logarithms. A real signal of n = 2^log2n values and its spectrum share one array, the
/// "packed real spectrum": entry 0 is the DC term, entry 1 the Nyquist term, entries 2k and 2k + 1 are the
/// real and imaginary part of bin k = 1 ... n/2 - 1. The forward transform uses exp(-i...) and no scaling;
/// forward followed by inverse multiplies by n/2. Tables are shared by the whole process and only grow: one
/// transform at a time. (Sorensen, Heideman, Burrus: On computing the split-radix FFT, IEEE ASSP 34, 1986.)

/// One-time set-up of the shared tables; later calls do nothing.
void initFFTTables();

/// Makes sure that the shared cosine table serves real transforms of up to 2^log2n points, log2n = 0 ... 31.
void makeCosineTable(int32_t log2n);

/// Builds the bit-reversal table for 2^log2m complex points and makes sure that the cosine table covers
/// 2^log2m.
void prepareFFTSize(int32_t log2m);

/// `signal` (2^log2n values, log2n = 4 ... 31) becomes its packed real spectrum. Eight values (log2n = 3)
/// only pass the step that splits a complex spectrum, because the complex transform of four points is left
/// out.
void realFFTForward(double* signal, int32_t log2n);

/// `spectrum` (packed, 2^log2n values, log2n = 4 ... 31) becomes n/2 times the real signal. Eight values: as
/// forward.
void realFFTInverse(double* spectrum, int32_t log2n);

/// Unscaled complex transforms of 2^log2m interleaved points, log2m = 3 ... 31.
void complexFFTForward(double* points, int32_t log2m);
void complexFFTInverse(double* points, int32_t log2m);

} // namespace emeg
