#include "dsp/PowerOfTen.h"
#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

namespace emeg {

namespace {
constexpr int maxScalingOrder = 10; // of the question; the dialogue may hold more
constexpr int maxPowerOfTen = 308;  // of a double
} // namespace

bool LMTRPluginEMEGFileConverter::askScalingAndReference() {
  switches.useAverageReference = false;
  if (!options.applyScaling && !options.offerAverageReference) return true;

  if (options.parametersFromDialog && options.applyScaling) {
    scalingOrder = host::dialogIntegerParameter(5);
    if (scalingOrder < 0) {
      const std::string prompt = formatText("Please provide a scaling order (10^n) factor [0-%i] \n"
                                            " (leave 0 for no scaling).",
                                            maxScalingOrder);
      scalingOrder = host::integerInput(prompt.c_str(), 0, 0, maxScalingOrder);
      if (scalingOrder < 0) return abortRun(log);
    }
    if (scalingOrder > maxPowerOfTen) {
      return showError(formatText("The scaling order %d is too large: 10^%d is the largest factor.",
                                  scalingOrder, maxPowerOfTen));
    }
  }

  if (options.offerAverageReference && options.isEEG) {
    int answer = host::dialogIntegerParameter(6);
    answer = answer > 0 ? answer - 1 : -1;
    if (answer < 0)
      answer = host::yesNoMessageBox("Do you want to transform the data to the average reference?");
    if (answer < 0) return abortRun(log);
    switches.useAverageReference = answer != 0;
  }

  if (switches.useAverageReference && selection.nrOfSelectedChannels > 0) {
    int32_t nrOfReferences = 0;
    for (int32_t channel = 0; channel < selection.nrOfSelectedChannels; ++channel)
      if (roleOf(channel).takesPartInReference) ++nrOfReferences;
    averageReferenceWeights.clear();
    for (int32_t channel = 0; channel < selection.nrOfSelectedChannels; ++channel)
      averageReferenceWeights.push_back(roleOf(channel).takesPartInReference ? 1.0 / nrOfReferences : 0.0);
  }
  return true;
}

void LMTRPluginEMEGFileConverter::applyScalingOrder() {
  switches.scalingNeeded = scalingOrder != 0;
  const double factor = powerOfTen(scalingOrder);
  for (const int32_t channel : selection.selectedChannels) {
    channels.channelScale[static_cast<size_t>(channel)] *= factor;
    channels.channelOffset[static_cast<size_t>(channel)] *= factor;
  }
}

} // namespace emeg
