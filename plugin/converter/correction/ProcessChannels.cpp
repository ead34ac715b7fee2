#include "engine/WholeChannelCorrection.h"
#include "engine/beats/BlindBeats.h"
#include "files/formats/TriggerMarkers.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/correction/ChunkStore.h"
#include "plugin/converter/correction/RunObserver.h"

#include <algorithm>
#include <cerrno>

namespace emeg {

namespace {

/// What the answers ask for, as the engine takes it.
RunPlan planOf(const LMTRPluginEMEGFileConverter& c) {
  RunPlan plan;
  plan.method = c.method;
  plan.samplingFrequency = c.values.samplingFrequency;
  plan.samplingInterval = c.values.samplingInterval;
  for (int32_t channel = 0; channel < c.selection.nrOfSelectedChannels; ++channel)
    plan.roles.push_back(c.roleOf(channel));

  plan.correctSaturations = c.switches.correctSaturations;
  plan.correctGradient = c.switches.correctGradient;
  plan.correctBCG = c.switches.correctBCG;
  plan.splitsLowFrequencies = c.switches.anyArtifactCorrection;
  plan.removeLineSinusoids = c.switches.removeLineSinusoids;
  plan.filteringNeeded = c.switches.filteringNeeded;
  plan.useAverageReference = c.switches.useAverageReference;

  plan.saturationLimits = saturationLimitsOf(static_cast<uint8_t>(c.input.inputSampleFormat));
  plan.volumeWise = c.switches.volumeWise != 0;
  plan.lineFrequencies = c.filters.notchFrequencies;
  plan.referenceWeights = c.averageReferenceWeights;
  plan.filterStages = c.filters.stages;
  plan.decimationFactor = c.filters.decimationFactor;

  plan.nrOfSamples = c.span.nrOfIntervalTimePoints;
  plan.nrOfProcessed = c.span.nrOfProcessedTimePoints();
  plan.margin = c.span.firstTimePoint - c.span.firstProcessedTimePoint;
  plan.log2FftLength = c.span.log2FftLength;
  plan.fftLength = c.span.fftLength;
  plan.nrOfOutputs = c.span.nrOfOutputTimePoints;
  return plan;
}

} // namespace

bool LMTRPluginEMEGFileConverter::processChannels() {
  const auto nrOfPulseChannels =
      std::count_if(selection.selectedChannels.begin(), selection.selectedChannels.end(),
                    [&, channel = 0](int32_t) mutable { return roleOf(channel++).takesPartInPulses; });
  QuietRunsTiming timing;
  BlindBeats blindBeats(method, static_cast<int>(nrOfPulseChannels));
  return correctChannels(timing, blindBeats);
}

bool LMTRPluginEMEGFileConverter::correctChannels(TimingStrategy& timing, BeatStrategy& beatStrategy) {
  if (!switches.correctionNeeded) return true;
  RunObserver observer(*this);
  ChunkStore store(chunkFiles);
  try {
    WholeChannelCorrection correction(planOf(*this), store, timing, &beatStrategy, observer);
    if (switches.correctGradient || switches.correctBCG) {
      protocolList.timeFactor = microsecondsPerSecond;
      protocolList.append(makeTriggerProtocol());
    }
    correction.run();
    sequence = correction.sequence();
  } catch (const StoreError& error) {
    errno = error.errorNumber();
    return reportFileError(error.what());
  } catch (const RunEnded&) {
    return false;
  }
  // Every writer describes the decimated data.
  values.samplingFrequency /= filters.decimationFactor;
  values.samplingInterval *= filters.decimationFactor;
  return true;
}

} // namespace emeg
