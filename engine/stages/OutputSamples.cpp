#include "engine/stages/Stages.h"

#include <algorithm>

namespace emeg {

namespace {

/// Every filter takes what it needs for the ones behind it.
void filterStretch(StretchState& stretch) {
  const StretchPlan& plan = stretch.plan;
  for (size_t i = 0; i < plan.filters.size(); ++i) {
    PositionRange range = stretch.ranges.filtered;
    for (size_t later = plan.filters.size() - 1; later > i; --later)
      range = plan.filters[later].inputFor(range, plan.recordingLength);
    stretch.estimate.resize(static_cast<size_t>(range.length()));
    plan.filters[i].apply(stretch.stretch(), range, stretch.estimate);
    stretch.samples.swap(stretch.estimate);
    stretch.held = range;
  }
}

void takeOutputOfStretch(StretchState& stretch) {
  const PositionRange outputs = stretch.ranges.outputs;
  stretch.output.resize(static_cast<size_t>(outputs.length()));
  if (stretch.plan.resampler) {
    stretch.plan.resampler->apply(stretch.stretch(), outputs, stretch.output);
  } else {
    const std::span<const double> samples = stretch.at(outputs);
    std::copy(samples.begin(), samples.end(), stretch.output.begin());
  }
  for (double& value : stretch.output) value *= stretch.plan.scale;
}

/// In the workspace's row of sums, one per output of the stretch.
void sumReferenceOfStretch(StageRun& run) {
  const double weight = run.plan.referenceWeights[static_cast<size_t>(run.channel)];
  for (size_t i = 0; i < run.stretch->output.size(); ++i)
    run.work.referenceOfStretch[i] += weight * run.stretch->output[i];
}

} // namespace

void filterOutput(StageRun& run) {
  if (run.stretch != nullptr) return filterStretch(*run.stretch);
  filterSignalFFT(run.signal(), run.plan.nrOfSamples, run.shared.outputFilter, run.work.fft);
}

void takeOutputSamples(StageRun& run) {
  if (run.stretch != nullptr) return takeOutputOfStretch(*run.stretch);
  const double* const signal = run.signal();
  for (int64_t k = 0, j = 0; j < run.plan.nrOfSamples; ++k, j += run.plan.decimationFactor)
    run.work.chunkBuffer[static_cast<size_t>(k)] = static_cast<float>(signal[j]);
}

void sumReference(StageRun& run) {
  if (!run.role().takesPartInReference) return;
  if (run.stretch != nullptr) return sumReferenceOfStretch(run);
  const double weight = run.plan.referenceWeights[static_cast<size_t>(run.channel)];
  for (int64_t i = 0; weight != 0.0 && i < run.plan.nrOfOutputs; ++i) {
    float& sum = run.shared.referenceSum[static_cast<size_t>(i)];
    const double sample = static_cast<double>(run.work.chunkBuffer[static_cast<size_t>(i)]);
    sum = static_cast<float>(sample * weight + static_cast<double>(sum));
  }
}

} // namespace emeg
