#include "engine/stages/Stages.h"

namespace emeg {

void filterOutput(StageRun& run) {
  filterSignalFFT(run.signal(), run.plan.nrOfSamples, run.shared.outputFilter);
}

void takeOutputSamples(StageRun& run) {
  const double* const signal = run.signal();
  for (int64_t k = 0, j = 0; j < run.plan.nrOfSamples; ++k, j += run.plan.decimationFactor)
    run.work.chunkBuffer[static_cast<size_t>(k)] = static_cast<float>(signal[j]);
}

void sumReference(StageRun& run) {
  if (!run.role().takesPartInReference) return;
  const double weight = run.plan.referenceWeights[static_cast<size_t>(run.channel)];
  for (int64_t i = 0; weight != 0.0 && i < run.plan.nrOfOutputs; ++i) {
    float& sum = run.shared.referenceSum[static_cast<size_t>(i)];
    const double sample = static_cast<double>(run.work.chunkBuffer[static_cast<size_t>(i)]);
    sum = static_cast<float>(sample * weight + static_cast<double>(sum));
  }
}

} // namespace emeg
