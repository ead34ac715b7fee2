#pragma once

#include "dsp/FFTWorkspace.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Power spectral density of one channel, square microvolts per bin; bin k lies at k x hzPerBin.
struct PowerSpectrum {
  double hzPerBin = 0;
  std::vector<double> powers; ///< empty: the stretch holds no window
};

/// What transforms work in. One per thread.
struct FigureWorkspace {
  std::vector<double> window;
  FFTWorkspace fft;
};

/// Where the windows of a spectrum lie in a recording: Welch's method with Hann windows of about eight
/// seconds (Welch: The use of fast Fourier transform for the estimation of power spectra, IEEE Trans. Audio
/// Electroacoust. 15 (1967)), at most 100 windows spread over the stretch, two neighbours at most
/// overlapping. The same for all channels, and never changed: threads may share it.
class WelchWindows {
public:
  /// The stretch `from` ... `to` (seconds) of a recording, up to `highest` Hz. A stretch that is shorter than
  /// a window has none, and neither has one of a rate that makes no sense.
  WelchWindows(double from, double to, double highest, double samplingFrequency, int64_t nrOfTimePoints);

  int64_t count() const { return count_; }
  int64_t startOf(int64_t window) const;
  int64_t length() const { return int64_t{1} << log2Length_; } ///< samples
  int32_t log2Length() const { return log2Length_; }
  double hzPerBin() const { return hzPerBin_; }
  size_t nrOfBins() const { return nrOfBins_; }
  const std::vector<double>& hann() const { return hann_; }
  /// From a bin's squared magnitude to its share of the mean square, both sides of the spectrum together.
  double scale() const { return scale_; }

private:
  int64_t first_ = 0, end_ = 0; ///< samples of the stretch
  int64_t count_ = 0;
  int32_t log2Length_ = 0;
  double hzPerBin_ = 0;
  size_t nrOfBins_ = 0;
  double scale_ = 0;
  std::vector<double> hann_;
};

/// The spectrum of one channel, stretch by stretch. Samples are taken as 32-bit floats, so that how the
/// channel is cut into stretches changes no bit; what is not finite then counts as the window's mean. Memory:
/// 4 bytes per sample of a window while one is being collected (at 5 kHz 128 KB), 8 per bin.
class WelchSpectrum {
public:
  /// `windows` must live as long.
  explicit WelchSpectrum(const WelchWindows& windows);

  /// The channel's next samples.
  void add(std::span<const double> samples, FigureWorkspace& workspace);

  /// Of what was added, times `factor`.
  PowerSpectrum spectrum(double factor) const;

private:
  void collect(std::span<const double> samples);
  template <typename Value>
  void transform(std::span<const Value> samples, FigureWorkspace& workspace);
  void beginNextWindow(int64_t position);

  const WelchWindows* windows_;
  std::vector<double> powers_;
  std::vector<float> pending_; ///< what was seen of the window that comes next
  int64_t position_ = 0;
  int64_t window_ = 0; ///< the one that comes next
};

} // namespace emeg
