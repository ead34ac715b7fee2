#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace emeg {

/// Band-limited interpolation between samples by a sinc under a Kaiser window, 32 samples wide. It is exact
/// to about 1e-4 up to eight tenths of the Nyquist frequency, where a cubic spline is wrong by several
/// percent. (Smith, Gossett: A flexible sampling-rate conversion method, ICASSP 1984.)
class BandLimitedShift {
public:
  /// `fraction` from 0 to 1.
  explicit BandLimitedShift(double fraction);

  /// Value at k + fraction. Outside the signal there is 0.
  double at(std::span<const double> signal, int64_t k) const;

private:
  static constexpr int nrOfTaps = 32;
  std::array<double, nrOfTaps> taps_{};
};

/// out[i] = the signal at position + i; 0 outside the signal.
void readShifted(std::span<const double> signal, double position, std::span<double> out);

} // namespace emeg
