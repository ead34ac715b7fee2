#include "engine/stages/KnotSpline.h"
#include "engine/stages/Stages.h"

#include <algorithm>

namespace emeg {

namespace {

/// Leaves the current channel low-passed.
void reduceForBeats(StageRun& run, std::vector<double>& series) {
  double* const signal = run.signal();
  filterSignalFFT(signal, run.plan.nrOfSamples, run.shared.bcgLowPassFilter);
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

} // namespace

void keepHeartSeries(StageRun& run) {
  if (!run.inTwoPasses) return keepElectrocardiogram(run);
  keepChannel(run);
  reduceForBeats(run, run.shared.bcgSeries[static_cast<size_t>(run.pulseChannel)]);
}

void removeHeartBeats(StageRun& run) {
  SharedState& shared = run.shared;
  std::vector<double>& series = shared.bcgSeries[static_cast<size_t>(run.pulseChannel)];
  run.beats->replaceByEstimate(run.pulseChannel, series, shared.bcgLength, run.observer);
  series[static_cast<size_t>(shared.bcgLength)] = 0.0;
  combineWithSpline(run, series, shared.bcgLength + 1, shared.bcgStep, -1);
}

} // namespace emeg
