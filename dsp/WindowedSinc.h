#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// What finite filters are made of. Only additions, multiplications, divisions and square roots are used:
/// the same bits on every machine.

/// sin(pi x), within 1e-15 of the value for the x given; the argument is reduced without rounding.
double sineOfHalfTurns(double x);

/// sin(pi x) / (pi x), and 1 at 0.
double sinc(double x);

/// Hamming window at x = -1 ... 1: 0.54 + 0.46 cos(pi x).
double hammingWindow(double x);

/// Low-pass kernel of a continuous argument: sinc times the Kaiser window whose stop-band lies `attenuation`
/// dB down. (Kaiser: Nonrecursive digital filter design using the I0-sinh window function, ISCAS 1974.)
class KaiserSinc {
public:
  /// `cutoff` (amplitude 0.5) and `transition` (whole width around it) in cycles per sample, `attenuation` in
  /// dB from 50 on.
  KaiserSinc(double cutoff, double transition, double attenuation);

  /// The kernel is 0 from this distance in samples on.
  double halfWidth() const { return halfWidth_; }
  /// The kernel's zero crossings lie about this far apart, in samples.
  double crossingDistance() const { return 0.5 / cutoff_; }
  /// Value at a distance in samples; the integral over the kernel is about 1.
  double operator()(double distance) const;

private:
  double cutoff_;
  double beta_;
  double halfWidth_;
  double windowAtCentre_;
};

/// Scales the values so that their sum is 1.
void normaliseSum(double* values, int64_t count);

} // namespace emeg
