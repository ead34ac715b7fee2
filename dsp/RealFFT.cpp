#include "dsp/RealFFT.h"

#include "dsp/FFTTables.h"
#include "dsp/FFTTwiddles.h"
#include "dsp/FFTWorkspace.h"
#include "dsp/LongFFTPasses.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace emeg {

namespace {

#include "dsp/SplitRadix.h"

#include "dsp/SpectrumSplit.h"

/// Below 8 points there is no bin between DC and Nyquist's neighbour to split, and the tables end at 2^31
/// points.
bool hasRealTransform(int32_t log2n) {
  return log2n >= 3 && log2n <= maxLog2FftSize;
}

/// Takes the spectrum of the complex points x[2j] + i x[2j + 1] apart into that of the real signal (forward),
/// or puts it together again (inverse); bins k and n/2 - k are done together. DC and Nyquist are left to the
/// caller.
template <Direction direction>
void splitBins(double* x, int64_t n, const CosineTable& table) {
  const int64_t stride = table.period() / n;
  const double* cosine = table.quarter().data();
  const double* sine = cosine + table.period() / 4;
  for (int64_t i = 2; i < n / 2; i += 2) {
    const int64_t j = n - i;
    cosine += stride;
    sine -= stride;
    Point<double> bin{x[i], x[i + 1]};
    Point<double> mirror{x[j], x[j + 1]};
    splitPair<direction>(bin, mirror, *cosine, *sine);
    x[i] = bin.re;
    x[i + 1] = bin.im;
    x[j] = mirror.re;
    x[j + 1] = mirror.im;
  }
  x[n / 2 + 1] = -x[n / 2 + 1];
}

} // namespace

void realFFTForward(double* signal, int32_t log2n, FFTWorkspace& workspace) {
  if (!hasRealTransform(log2n)) return;
  if (log2n >= RealFFTPlan::leastLog2n) {
    // The plan comes first: what it needs of the cosine table serves the complex transform too.
    const RealFFTPlan& plan = workspace.realFFTPlan(log2n);
    complexFFTForward(signal, log2n - 1, workspace);
    longFFTPasses().splitSpectrum(plan, signal);
  } else {
    complexFFTForward(signal, log2n - 1, workspace);
    splitBins<Direction::Forward>(signal, int64_t{1} << log2n, workspace.cosines(log2n));
  }
  const double even = signal[0];
  const double odd = signal[1];
  signal[0] = even + odd;
  signal[1] = even - odd;
}

void realFFTInverse(double* spectrum, int32_t log2n, FFTWorkspace& workspace) {
  if (!hasRealTransform(log2n)) return;
  if (log2n >= RealFFTPlan::leastLog2n)
    longFFTPasses().mergeSpectrum(workspace.realFFTPlan(log2n), spectrum);
  else
    splitBins<Direction::Inverse>(spectrum, int64_t{1} << log2n, workspace.cosines(log2n));
  const double dc = spectrum[0];
  const double nyquist = spectrum[1];
  spectrum[0] = (dc + nyquist) * 0.5;
  spectrum[1] = (dc - nyquist) * 0.5;
  complexFFTInverse(spectrum, log2n - 1, workspace);
}

} // namespace emeg
