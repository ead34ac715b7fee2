#include "artifacts/CubicSplines.h"
#include "engine/stages/KnotSpline.h"
#include "engine/stages/Stages.h"

#include <algorithm>

namespace emeg {

namespace {

/// Leaves the current channel low-passed.
void reduceForBeats(StageRun& run, std::vector<double>& series) {
  double* const signal = run.signal();
  filterSignalFFT(signal, run.plan.nrOfSamples, run.shared.bcgLowPassFilter, run.work.fft);
  for (int64_t k = 0, j = 0; j < run.plan.nrOfSamples; ++k, j += run.shared.bcgStep)
    series[static_cast<size_t>(k)] = static_cast<double>(static_cast<float>(signal[j]));
}

/// Before the output filter and the decimation, which may leave nothing of its peaks.
void keepElectrocardiogram(StageRun& run) {
  double* const signal = run.signal();
  const int64_t n = run.plan.nrOfSamples;
  std::copy(signal, signal + n, run.work.splineScratch.begin());
  run.shared.ecgSeries.assign(static_cast<size_t>(run.shared.bcgLength), 0.0);
  reduceForBeats(run, run.shared.ecgSeries);
  std::copy_n(run.work.splineScratch.begin(), n, signal);
}

/// The channel comes back from the store for the second pass: it goes there before it is reduced.
void keepChannel(StageRun& run) {
  for (int64_t i = 0; i < run.plan.nrOfSamples; ++i)
    run.work.chunkBuffer[static_cast<size_t>(run.plan.margin + i)] = static_cast<float>(run.signal()[i]);
}

/// The artifact's spline, from the knots around the stretch. Between two knots without artifact there is
/// none, where a spline would still swing: those samples keep their bits.
void removeFromStretch(StretchState& stretch, const std::vector<double>& knots) {
  constexpr int64_t beside = 64; // knots behind which a spline does not feel where it was cut
  const PositionRange range = stretch.ranges.signal;
  const int64_t step = stretch.plan.beatStep;
  const auto nrOfKnots = static_cast<int64_t>(knots.size());
  const int64_t first = std::max<int64_t>(range.begin / step - beside, 0);
  const int64_t end = std::min(range.end / step + 2 + beside, nrOfKnots);
  if (end - first < 2 || range.length() == 0) return;
  const double* const a = knots.data() + first;
  std::vector<double>& coefficients = stretch.estimate;
  const auto n = static_cast<size_t>(end - first);
  coefficients.resize(3 * n);
  double* const b = coefficients.data();
  double* const c = b + n;
  double* const d = c + n;
  computeSplineCoefficients(a, b, c, d, end - first);
  const std::span<double> samples = stretch.at(range);
  for (int64_t t = range.begin; t < range.end; ++t) {
    const int64_t k = std::min(t / step, nrOfKnots - 1) - first;
    if (a[k] == 0 && k + 1 < end - first && a[k + 1] == 0) continue;
    const double f = static_cast<double>(t - (k + first) * step) / static_cast<double>(step);
    samples[static_cast<size_t>(t - range.begin)] -= ((d[k] * f + c[k]) * f + b[k]) * f + a[k];
  }
}

} // namespace

void keepHeartSeries(StageRun& run) {
  if (!run.removesBeats()) return keepElectrocardiogram(run);
  keepChannel(run);
  reduceForBeats(run, run.shared.bcgSeries[static_cast<size_t>(run.pulseChannel)]);
}

void removeHeartBeats(StageRun& run) {
  if (run.stretch != nullptr)
    return removeFromStretch(*run.stretch,
                             run.stretch->plan.beatArtifacts[static_cast<size_t>(run.pulseChannel)]);
  SharedState& shared = run.shared;
  std::vector<double>& series = shared.bcgSeries[static_cast<size_t>(run.pulseChannel)];
  run.beats->replaceByEstimate(run.pulseChannel, series, shared.bcgLength, run.observer);
  series[static_cast<size_t>(shared.bcgLength)] = 0.0;
  combineWithSpline(run, series, shared.bcgLength + 1, shared.bcgStep, -1);
}

} // namespace emeg
