#include "engine/stages/Stages.h"

namespace emeg {

namespace {

/// One line after the other, each fitted to what the ones before it have left.
void removeFromStretch(StretchState& stretch) {
  const std::vector<SinusoidTracker>& lines = stretch.plan.lines;
  for (size_t i = 0; i < lines.size(); ++i) {
    PositionRange range = stretch.ranges.signal;
    for (size_t later = lines.size() - 1; later > i; --later)
      range = lines[later].inputFor(range, stretch.plan.recordingLength);
    stretch.estimate.assign(static_cast<size_t>(range.length()), 0.0);
    lines[i].subtract(stretch.stretch(), range, stretch.estimate);
    const std::span<double> samples = stretch.at(range);
    for (size_t t = 0; t < samples.size(); ++t) samples[t] += stretch.estimate[t];
  }
}

} // namespace

void removeLineNoise(StageRun& run) {
  if (run.stretch != nullptr) return removeFromStretch(*run.stretch);
  removeSinusoids(run.signal(), run.plan.nrOfSamples, run.plan.lineFrequencies, run.plan.samplingInterval,
                  run.shared.sinusoidTables.notchSpanLengths);
}

} // namespace emeg
