#include "dsp/RealFFT.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTTwiddles.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace emeg {

namespace {

#include "dsp/SplitRadix.h"

/// Below 8 points there is no bin between DC and Nyquist's neighbour to split, and the tables end at 2^31
/// points.
bool hasRealTransform(int32_t log2n) {
  return log2n >= 3 && log2n <= maxLog2FftSize;
}

/// Takes the spectrum of the complex points x[2j] + i x[2j + 1] apart into that of the real signal (forward),
/// or puts it together again (inverse); bins k and n/2 - k are done together. DC and Nyquist are left to the
/// caller.
template <Direction direction>
void splitBins(double* x, int64_t n) {
  const FFTTables& tables = fftTables();
  const int64_t stride = tables.cosinePeriod / n;
  const double* cosine = tables.cosines.data();
  const double* sine = cosine + tables.cosinePeriod / 4;
  constexpr double sign = direction == Direction::Forward ? 1.0 : -1.0;
  for (int64_t i = 2; i < n / 2; i += 2) {
    const int64_t j = n - i;
    cosine += stride;
    sine -= stride;
    const double evenRe = (x[i] + x[j]) * 0.5;
    const double evenIm = (x[i + 1] - x[j + 1]) * 0.5;
    const double oddRe = (x[i + 1] + x[j + 1]) * (0.5 * sign);
    const double oddIm = (x[j] - x[i]) * (0.5 * sign);
    const Point<double> odd = turn<direction>(Point<double>{oddRe, oddIm}, *cosine, *sine);
    x[i] = evenRe + odd.re;
    x[i + 1] = evenIm + odd.im;
    x[j] = evenRe - odd.re;
    x[j + 1] = odd.im - evenIm;
  }
  x[n / 2 + 1] = -x[n / 2 + 1];
}

} // namespace

void realFFTForward(double* signal, int32_t log2n) {
  if (!hasRealTransform(log2n)) return;
  makeCosineTable(log2n);
  complexFFTForward(signal, log2n - 1);
  splitBins<Direction::Forward>(signal, int64_t{1} << log2n);
  const double even = signal[0];
  const double odd = signal[1];
  signal[0] = even + odd;
  signal[1] = even - odd;
}

void realFFTInverse(double* spectrum, int32_t log2n) {
  if (!hasRealTransform(log2n)) return;
  makeCosineTable(log2n);
  splitBins<Direction::Inverse>(spectrum, int64_t{1} << log2n);
  const double dc = spectrum[0];
  const double nyquist = spectrum[1];
  spectrum[0] = (dc + nyquist) * 0.5;
  spectrum[1] = (dc - nyquist) * 0.5;
  complexFFTInverse(spectrum, log2n - 1);
}

} // namespace emeg
