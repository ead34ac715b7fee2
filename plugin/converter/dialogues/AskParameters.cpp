#include "plugin/converter/Converter.h"

namespace emeg {

bool LMTRPluginEMEGFileConverter::askParameters() {
  log.logProgress("Defining parameters");
  span.durationMs =
      static_cast<float>(static_cast<double>(input.nrOfTimePoints) * values.samplingInterval * 1000);
  values.intervalStartMs = 0;
  values.intervalEndMs = span.durationMs;
  filters = FilterChoice();
  scalingOrder = 0;
  selection.channelSubset = false;
  switches.intervalRestricted = false;
  if (options.forceHeaderUpdate) {
    CcdHeader& header = channels.channelDescription.header;
    header.setSamplingFrequency(values.samplingFrequency);
    header.setIntervalLengthMs(static_cast<double>(span.durationMs));
    header.setNrOfTimePoints(static_cast<int32_t>(input.nrOfTimePoints));
  }

  const bool answered = askChannelChoice() && buildChannelLists() && askTimeInterval() &&
                        askArtifactCorrection() && askFilters() && askScalingAndReference();
  if (!answered) return false;

  applyScalingOrder();
  switches.filteringNeeded = filters.stages.count() > 0;
  switches.anyArtifactCorrection = switches.correctGradient || switches.correctBCG || switches.correctOcular;
  switches.correctionNeeded = switches.filteringNeeded || switches.correctSaturations ||
                              switches.anyArtifactCorrection || switches.removeLineSinusoids ||
                              switches.useAverageReference;
  switches.processingNeeded = options.forceHeaderUpdate || switches.intervalRestricted ||
                              selection.channelSubset || switches.correctionNeeded || switches.scalingNeeded;
  switches.rewriteNeeded = options.forceHeaderUpdate || switches.intervalRestricted;
  if (!switches.processingNeeded) {
    log.logProgress("No processing is required: exiting plugin.");
    return false;
  }
  return deriveSampleSpan() && checkRunIsPossible();
}

} // namespace emeg
