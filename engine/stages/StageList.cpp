#include "engine/stages/StageList.h"

#include "engine/stages/Stages.h"

namespace emeg {

namespace {

constexpr Pass before = Pass::BeforeBeats;
constexpr Pass behind = Pass::BehindBeats;

bool always(const StageRun&) {
  return true;
}

/// Stretch after stretch the series are made while samples are taken in.
bool keepsHeartSeries(const StageRun& run) {
  if (run.stretch != nullptr) return false;
  return run.removesBeats() || (run.plan.correctBCG && run.role().showsHeartBeats);
}

constexpr Stage stages[] = {
    {"samples that are not numbers", before, always, zeroSamplesThatAreNotNumbers},
    {"saturated samples", before, [](const StageRun& r) { return r.plan.correctSaturations; },
     repairChannelSaturations},
    {"low frequencies are split off", before, [](const StageRun& r) { return r.plan.splitsLowFrequencies; },
     splitOffLowFrequencies},
    {"gradient artifact", before, [](const StageRun& r) { return r.plan.correctGradient; },
     removeGradientArtifact},
    {"line noise", before, [](const StageRun& r) { return r.plan.removeLineSinusoids; }, removeLineNoise},
    {"series for the search for heart beats", before, keepsHeartSeries, keepHeartSeries},
    {"heart beat artifact", behind, [](const StageRun& r) { return r.removesBeats(); }, removeHeartBeats},
    {"low frequencies come back", behind, [](const StageRun& r) { return r.plan.splitsLowFrequencies; },
     addLowFrequencies},
    {"filters", behind, [](const StageRun& r) { return r.plan.filteringNeeded; }, filterOutput},
    {"sampling rate", behind, always, takeOutputSamples},
    {"average reference", behind, [](const StageRun& r) { return r.plan.useAverageReference; }, sumReference},
};

} // namespace

std::span<const Stage> correctionStages() {
  return stages;
}

void applyStages(Pass pass, StageRun& run) {
  for (const Stage& stage : stages)
    if (stage.pass == pass && stage.isOn(run)) stage.apply(run);
}

} // namespace emeg
