#include "artifacts/gradient/templates/BandLimitedShift.h"

#include <cmath>
#include <numbers>

namespace emeg {

namespace {

constexpr double kaiserBeta = 8;

/// Modified Bessel function of the first kind, order 0, by its power series.
double besselI0(double x) {
  double term = 1;
  double sum = 1;
  for (int k = 1; term > 1e-17 * sum; ++k) {
    term *= (x / (2 * k)) * (x / (2 * k));
    sum += term;
  }
  return sum;
}

} // namespace

BandLimitedShift::BandLimitedShift(double fraction) {
  constexpr int before = nrOfTaps / 2 - 1;
  constexpr int half = nrOfTaps / 2;
  const double scale = 1 / besselI0(kaiserBeta);
  for (int j = 0; j < nrOfTaps; ++j) {
    const double x = j - before - fraction;
    const double u = x / half;
    const double window = std::fabs(u) < 1 ? besselI0(kaiserBeta * std::sqrt(1 - u * u)) * scale : 0;
    const double argument = std::numbers::pi * x;
    taps_[static_cast<size_t>(j)] = (std::fabs(argument) < 1e-9 ? 1 : std::sin(argument) / argument) * window;
  }
}

double BandLimitedShift::at(std::span<const double> signal, int64_t k) const {
  const int64_t first = k - (nrOfTaps / 2 - 1);
  const auto n = static_cast<int64_t>(signal.size());
  double sum = 0;
  if (first >= 0 && first + nrOfTaps <= n) {
    const double* from = signal.data() + first;
    for (size_t j = 0; j < nrOfTaps; ++j) sum += from[j] * taps_[j];
    return sum;
  }
  for (int64_t j = 0; j < nrOfTaps; ++j)
    if (first + j >= 0 && first + j < n)
      sum += signal[static_cast<size_t>(first + j)] * taps_[static_cast<size_t>(j)];
  return sum;
}

void readShifted(std::span<const double> signal, double position, std::span<double> out) {
  const double whole = std::floor(position);
  const auto k = static_cast<int64_t>(whole);
  const auto n = static_cast<int64_t>(signal.size());
  const BandLimitedShift shift(position - whole);
  for (size_t i = 0; i < out.size(); ++i) {
    const int64_t at = k + static_cast<int64_t>(i);
    out[i] = at < 0 || at >= n ? 0 : shift.at(signal, at);
  }
}

} // namespace emeg
