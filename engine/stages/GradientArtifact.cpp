#include "artifacts/CubicSplines.h"
#include "artifacts/gradient/templates/TemplateRemoval.h"
#include "engine/stages/Stages.h"

#include <algorithm>

namespace emeg {

namespace {

/// The timing is found once, on the first channel that shows it.
void findSequence(StageRun& run, const SplinedSignal& channel) {
  const RunPlan& plan = run.plan;
  const std::optional<MRSequence> found =
      run.timing.find({channel, plan.samplingFrequency, plan.log2FftLength, run.work.fft}, run.observer);
  if (!found) return;
  run.observer.sequenceFound(*found);
  const double slicesPerSecond = found->nrOfSlicesPerVolume / found->volumeDuration;
  const int window = run.observer.windowFor(slicesPerSecond, plan.proposedWindow);
  run.shared.sequence = *found;
  run.shared.sequence.windowHalfLength = windowHalfLengthOf(*found, window);
}

void removeFromStretch(StretchState& stretch) {
  if (stretch.plan.scans.empty()) return;
  const PositionRange range = stretch.ranges.withLines;
  stretch.estimate.assign(static_cast<size_t>(range.length()), 0.0);
  stretch.templates.estimate({stretch.high, stretch.ranges.high.begin, stretch.plan.recordingLength}, range,
                             stretch.estimate);
  const std::span<double> samples = stretch.at(range);
  for (size_t i = 0; i < samples.size(); ++i) samples[i] -= stretch.estimate[i];
}

} // namespace

/// A channel without any known timing stays as it is.
void removeGradientArtifact(StageRun& run) {
  if (run.stretch != nullptr) return removeFromStretch(*run.stretch);
  Workspace& work = run.work;
  const int64_t n = run.plan.nrOfSamples;
  double* const signal = run.signal();
  std::fill(work.artifactEstimate.begin(), work.artifactEstimate.end(), 0.0);
  computeSplineCoefficients(signal, work.splineB.data(), work.splineC.data(), work.splineD.data(), n);
  const SplinedSignal splined{signal, work.splineB.data(), work.splineC.data(), work.splineD.data(), n};
  if (run.shared.sequence.sliceDuration == 0 && run.role().showsSequence) findSequence(run, splined);
  if (run.shared.sequence.sliceDuration == 0) return;

  estimateGradientArtifact(splined, run.shared.sequence, run.plan.samplingFrequency, run.plan.volumeWise,
                           work.artifactEstimate.data());
  for (int64_t i = 0; i < n; ++i) signal[i] -= work.artifactEstimate[static_cast<size_t>(i)];
}

} // namespace emeg
