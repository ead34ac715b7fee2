#include "engine/stages/Stages.h"

namespace emeg {

void removeLineNoise(StageRun& run) {
  removeSinusoids(run.signal(), run.plan.nrOfSamples, run.plan.lineFrequencies, run.plan.samplingInterval,
                  run.shared.sinusoidTables.notchSpanLengths);
}

} // namespace emeg
