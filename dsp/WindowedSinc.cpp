#include "dsp/WindowedSinc.h"

#include <cmath>
#include <numbers>

namespace emeg {

namespace {

/// Modified Bessel function of the first kind and order 0, from its power series: all terms are positive.
double besselI0(double x) {
  const double square = x * x / 4;
  double term = 1;
  double sum = 1;
  for (int k = 1; term > sum * 1e-17; ++k) {
    term *= square / (static_cast<double>(k) * k);
    sum += term;
  }
  return sum;
}

} // namespace

double sineOfHalfTurns(double x) {
  // Into -1 ... 1, then into -1/2 ... 1/2 by sin(pi (1 - r)) = sin(pi r).
  double r = x - 2 * std::nearbyint(x / 2);
  if (r > 0.5) r = 1 - r;
  if (r < -0.5) r = -1 - r;
  const double angle = std::numbers::pi * r;
  const double square = angle * angle;
  double sum = 1;
  for (int k = 22; k >= 2; k -= 2) sum = 1 - sum * square / (static_cast<double>(k) * (k + 1));
  return angle * sum;
}

double sinc(double x) {
  return x == 0 ? 1.0 : sineOfHalfTurns(x) / (std::numbers::pi * x);
}

double hammingWindow(double x) {
  return 0.54 + 0.46 * sineOfHalfTurns(0.5 - x);
}

KaiserSinc::KaiserSinc(double cutoff, double transition, double attenuation)
    : cutoff_(cutoff), beta_(0.1102 * (attenuation - 8.7)),
      halfWidth_((attenuation - 7.95) / (2 * 2.285 * 2 * std::numbers::pi * transition)),
      windowAtCentre_(besselI0(beta_)) {}

double KaiserSinc::operator()(double distance) const {
  const double relative = distance / halfWidth_;
  if (!(std::abs(relative) < 1)) return 0;
  const double window = besselI0(beta_ * std::sqrt(1 - relative * relative)) / windowAtCentre_;
  return 2 * cutoff_ * sinc(2 * cutoff_ * distance) * window;
}

void normaliseSum(double* values, int64_t count) {
  double sum = 0;
  for (int64_t i = 0; i < count; ++i) sum += values[i];
  for (int64_t i = 0; i < count; ++i) values[i] /= sum;
}

} // namespace emeg
