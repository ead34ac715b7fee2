#pragma once

#include "engine/stages/StageRun.h"

namespace emeg {

/// The stages of a channel, one file each, in the order of the list. Each works on run.signal().

void zeroSamplesThatAreNotNumbers(StageRun& run);
void repairChannelSaturations(StageRun& run);
/// Leaves what lies above 1 Hz; the rest is kept beside the signal.
void splitOffLowFrequencies(StageRun& run);
void removeGradientArtifact(StageRun& run);
void removeLineNoise(StageRun& run);
/// Keeps the channel below 35 Hz at about 250 Hz for the search for heart beats.
void keepHeartSeries(StageRun& run);
void removeHeartBeats(StageRun& run);
void addLowFrequencies(StageRun& run);
void filterOutput(StageRun& run);
/// Leaves the samples that go out in the workspace's chunk buffer.
void takeOutputSamples(StageRun& run);
void sumReference(StageRun& run);

} // namespace emeg
