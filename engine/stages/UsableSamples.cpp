#include "engine/stages/Stages.h"

#include <cmath>

namespace emeg {

/// One sample that is not a number would spread over the whole channel in the first transform.
void zeroSamplesThatAreNotNumbers(StageRun& run) {
  if (run.stretch != nullptr) return; // done when they were taken in
  int64_t count = 0;
  const RunPlan& plan = run.plan;
  for (int64_t i = 0; i < plan.nrOfProcessed; ++i) {
    float& sample = run.work.chunkBuffer[static_cast<size_t>(i)];
    if (std::isfinite(sample)) continue;
    sample = 0;
    if (i >= plan.margin && i < plan.margin + plan.nrOfSamples) run.signal()[i - plan.margin] = 0;
    ++count;
  }
  if (count > 0) run.observer.notFiniteFound(run.channel, count);
}

void repairChannelSaturations(StageRun& run) {
  if (run.stretch != nullptr || !run.plan.saturationLimits) return;
  Workspace& work = run.work;
  repairSaturations(run.signal(), run.plan.nrOfSamples, *run.plan.saturationLimits, work.splineScratch.data(),
                    work.splineB.data(), work.splineC.data(), work.splineD.data(),
                    [&run] { run.observer.saturationFound(run.channel); });
}

} // namespace emeg
