#include "engine/stages/KnotSpline.h"
#include "engine/stages/Stages.h"

namespace emeg {

namespace {

/// The part below 1 Hz at ten values a second. It is read from the buffer's first sample on, not from the
/// interval's: the alignment that the second pass expects.
void keepLowFrequencyRest(StageRun& run) {
  SharedState& shared = run.shared;
  std::vector<double>& rest = shared.lowFrequencyRest[static_cast<size_t>(run.channel)];
  for (int64_t k = 0, j = 0; j < run.plan.nrOfSamples; ++k, j += shared.restStep)
    rest[static_cast<size_t>(k)] =
        static_cast<double>(run.work.chunkBuffer[static_cast<size_t>(j)]) - run.signal()[j];
}

/// Leaves the part below 1 Hz in the chunk buffer, from its first sample on.
void subtractHighPassedSignal(StageRun& run) {
  for (int64_t i = 0; i < run.plan.nrOfSamples; ++i) {
    float& sample = run.work.chunkBuffer[static_cast<size_t>(i)];
    sample = static_cast<float>(static_cast<double>(sample) - run.signal()[i]);
  }
}

/// Templates are made from what lies above 1 Hz and subtracted from all of the channel: nothing has to come
/// back.
void splitStretch(StretchState& stretch) {
  const PositionRange range = stretch.ranges.high;
  stretch.high.resize(static_cast<size_t>(range.length()));
  stretch.plan.split.apply(stretch.stretch(), range, stretch.high);
}

} // namespace

void splitOffLowFrequencies(StageRun& run) {
  if (run.stretch != nullptr) {
    if (!run.stretch->plan.scans.empty()) splitStretch(*run.stretch);
    return;
  }
  filterSignalFFT(run.signal(), run.plan.nrOfSamples, run.shared.artifactHighPassFilter, run.work.fft);
  if (run.removesBeats())
    keepLowFrequencyRest(run);
  else
    subtractHighPassedSignal(run);
}

void addLowFrequencies(StageRun& run) {
  if (run.stretch != nullptr) return;
  const SharedState& shared = run.shared;
  if (run.removesBeats())
    return combineWithSpline(run, shared.lowFrequencyRest[static_cast<size_t>(run.channel)],
                             shared.restLength, shared.restStep, 1);
  for (int64_t i = 0; i < run.plan.nrOfSamples; ++i)
    run.signal()[i] += static_cast<double>(run.work.chunkBuffer[static_cast<size_t>(i)]);
}

} // namespace emeg
