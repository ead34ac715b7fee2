#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

namespace emeg {

bool LMTRPluginEMEGFileConverter::buildOutputName() {
  std::string& suffix = values.outputSuffix;
  suffix.clear();
  if (options.selectChannels) {
    suffix += options.isEEG ? formatText("_%dch", selection.nrOfSelectedChannels)
                            : formatText("_%dgr-%dmg", selection.nrOfSelectedGradiometers,
                                         selection.nrOfSelectedMagnetometers);
  }
  if (options.selectTimeInterval) {
    suffix += formatText("_%.0f-%.0fms", static_cast<double>(values.intervalStartMs),
                         static_cast<double>(values.intervalEndMs));
  }
  if (options.applyFilters) {
    if (filters.highPassCutOff > 0) suffix += formatText("_HP%.0f", filters.highPassCutOff);
    if (filters.lowPassCutOff > 0) suffix += formatText("_LP%.0f", filters.lowPassCutOff);
    if (filters.nrOfNotches > 0) suffix += "_NOTCH";
    if (filters.decimationFactor > 1) suffix += formatText("_dec%d", filters.decimationFactor);
  }
  if (options.applyScaling && scalingOrder != 0) suffix += formatText("_sc%d", scalingOrder);
  if (options.correctArtifacts) {
    if (switches.correctGradient) suffix += "_GRA";
    if (switches.correctBCG) suffix += "_BCG";
    if (switches.correctOcular) suffix += "_OCU";
  }
  outputPathBuffer.setEnding(suffix + ".ctc");
  return true;
}

bool LMTRPluginEMEGFileConverter::checkOutputPath() {
  if (outputPathBuffer.path() != inputPathBuffer.path()) return true;
  return showError("The output file would replace the input file " + inputPathBuffer.path() +
                   ".<br>Choose an option that changes the output name.");
}

} // namespace emeg
