#pragma once

#include <cstdint>

namespace emeg {

class FFTWorkspace;

/// Real and complex discrete Fourier transforms of power-of-two length, in place, in double precision.
///
/// Sizes are base-2 logarithms. A real signal of n = 2^log2n values and its spectrum share one array, the
/// "packed real spectrum": entry 0 is the DC term, entry 1 the Nyquist term, entries 2k and 2k + 1 are the
/// real and imaginary part of bin k = 1 ... n/2 - 1. The forward transform uses exp(-i...) and no scaling;
/// forward followed by inverse multiplies by n/2. Tables are made at the first transform of a size, for the
/// whole process; what changes during a transform lies in the workspace: threads with workspaces of their own
/// transform at the same time. (Sorensen, Heideman, Burrus: On computing the split-radix FFT, IEEE ASSP 34,
/// 1986.)

/// One-time set-up of the shared tables; later calls do nothing.
void initFFTTables();

/// `signal` (2^log2n values, log2n = 4 ... 31) becomes its packed real spectrum. Eight values (log2n = 3)
/// only pass the step that splits a complex spectrum, because the complex transform of four points is left
/// out.
void realFFTForward(double* signal, int32_t log2n, FFTWorkspace& workspace);

/// `spectrum` (packed, 2^log2n values, log2n = 4 ... 31) becomes n/2 times the real signal. Eight values: as
/// forward.
void realFFTInverse(double* spectrum, int32_t log2n, FFTWorkspace& workspace);

/// Unscaled complex transforms of 2^log2m interleaved points, log2m = 3 ... 31.
void complexFFTForward(double* points, int32_t log2m, FFTWorkspace& workspace);
void complexFFTInverse(double* points, int32_t log2m, FFTWorkspace& workspace);

} // namespace emeg
