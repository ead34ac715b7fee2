#include "artifacts/SinusoidTracking.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace emeg {

namespace {

constexpr double hopSeconds = 4;

} // namespace

SinusoidTracker::SinusoidTracker(double frequency, double rate)
    : cyclesPerSample_(frequency / rate),
      hop_(std::max<int64_t>(static_cast<int64_t>(std::min(hopSeconds * rate, 1e9)), 16)) {
  if (!(cyclesPerSample_ > 0 && cyclesPerSample_ < 0.5))
    throw std::invalid_argument("a sinusoid must lie between 0 Hz and half of the sampling rate");
}

/// Turns since sample 0, without whole ones: the phase stays exact in recordings of days.
double SinusoidTracker::phaseAt(int64_t position) const {
  const double turns = cyclesPerSample_ * static_cast<double>(position);
  return 2 * std::numbers::pi * (turns - std::floor(turns));
}

PositionRange SinusoidTracker::inputFor(PositionRange outputs, int64_t recordingLength) const {
  if (outputs.length() <= 0) return {outputs.begin, outputs.begin};
  const int64_t firstWindow = outputs.begin / hop_;
  const int64_t lastWindow = (outputs.end - 1) / hop_ + 1;
  return {std::max<int64_t>((firstWindow - 1) * hop_, 0), std::min((lastWindow + 1) * hop_, recordingLength)};
}

/// Around sample window x hop, as far as the recording goes.
SinusoidTracker::Wave SinusoidTracker::fit(const RecordingStretch& stretch, int64_t window) const {
  const int64_t middle = window * hop_;
  const int64_t from = std::max<int64_t>(middle - hop_ + 1, 0);
  const int64_t to = std::min(middle + hop_, stretch.recordingLength);
  // Less than half a turn does not tell amplitude and phase apart: an offset would count as the sinusoid.
  constexpr double fewestTurns = 0.5;
  if (static_cast<double>(to - from) * cyclesPerSample_ < fewestTurns) return {};
  double cc = 0, ss = 0, cs = 0, xc = 0, xs = 0;
  for (int64_t t = from; t < to; ++t) {
    const double weight =
        0.5 + 0.5 * std::cos(std::numbers::pi * static_cast<double>(t - middle) / static_cast<double>(hop_));
    const double c = std::cos(phaseAt(t));
    const double s = std::sin(phaseAt(t));
    const double x = stretch.samples[static_cast<size_t>(t - stretch.first)];
    cc += weight * c * c;
    ss += weight * s * s;
    cs += weight * c * s;
    xc += weight * x * c;
    xs += weight * x * s;
  }
  const double determinant = cc * ss - cs * cs;
  constexpr double leastIndependent = 0.01;
  if (!(determinant > leastIndependent * cc * ss)) return {};
  return {(xc * ss - xs * cs) / determinant, (xs * cc - xc * cs) / determinant};
}

void SinusoidTracker::subtract(const RecordingStretch& stretch, PositionRange outputs,
                               std::span<double> samples) const {
  checkOutputs(outputs, stretch.recordingLength, samples.size());
  if (outputs.length() == 0) return;
  const PositionRange needed = inputFor(outputs, stretch.recordingLength);
  if (needed.begin < stretch.first || needed.end > stretch.positions().end)
    throw std::invalid_argument("the stretch lacks samples that the sinusoid is fitted to");
  Wave before, after;
  int64_t current = -1;
  for (int64_t t = outputs.begin; t < outputs.end; ++t) {
    const int64_t window = t / hop_;
    if (window != current) {
      before = window == current + 1 && current >= 0 ? after : fit(stretch, window);
      // A window whose middle lies behind the recording's end would see half of it at most.
      after = (window + 1) * hop_ < stretch.recordingLength ? fit(stretch, window + 1) : before;
      current = window;
    }
    const double u = static_cast<double>(t - window * hop_) / static_cast<double>(hop_);
    const double cosine = before.cosine + u * (after.cosine - before.cosine);
    const double sine = before.sine + u * (after.sine - before.sine);
    samples[static_cast<size_t>(t - outputs.begin)] -=
        cosine * std::cos(phaseAt(t)) + sine * std::sin(phaseAt(t));
  }
}

} // namespace emeg
