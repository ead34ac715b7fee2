#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

namespace emeg {

namespace {

constexpr int32_t modeNone = 1;
constexpr int32_t modeFromDialog = 2;
constexpr int32_t maxNrOfNotches = 20;
constexpr double antiAliasOrder = 3;

bool isCancelled(double answer) {
  return !(answer >= 0);
}

/// Adds an edge at a frequency in Hz and remembers when the list is full.
void addEdge(FilterChoice& filters, EdgeKind kind, double hz, double samplingInterval) {
  if (!filters.stages.addFilterStage(kind, hz * 2 * samplingInterval, filters.filterOrder))
    filters.stagesOverflowed = true;
}

} // namespace

bool LMTRPluginEMEGFileConverter::askFilters() {
  switches.removeLineSinusoids = false;
  filters.stages.clear();
  if (!options.applyFilters) return true;
  if (!askDecimation()) return false;

  const int32_t highPassMode = host::dialogIntegerParameter(0);
  const int32_t lowPassMode = host::dialogIntegerParameter(1);
  const int32_t notchMode = host::dialogIntegerParameter(2);
  if (!askNotches(notchMode)) return false;
  if (!askCutOff(highPassMode, "high-pass", 0, filters.highPassCutOff)) return false;
  if (!askCutOff(lowPassMode, "low-pass", 1, filters.lowPassCutOff)) return false;

  // The same index holds the decimation factor when parameters do not come from the dialogue.
  filters.filterOrder = host::dialogIntegerParameter(3);
  if (filters.filterOrder < 0) filters.filterOrder = 2;

  const double dt = values.samplingInterval;
  if (filters.highPassCutOff > 0) addEdge(filters, EdgeKind::HighPass, filters.highPassCutOff, dt);
  for (int32_t k = 0; k < filters.nrOfNotches; ++k) {
    const double frequency = filters.notchFrequencies[static_cast<size_t>(k)];
    const double halfWidth = filters.notchWidths[static_cast<size_t>(k)] / 2;
    addEdge(filters, EdgeKind::LowPass, frequency - halfWidth, dt);
    addEdge(filters, EdgeKind::HighPass, frequency + halfWidth, dt);
  }
  if (filters.lowPassCutOff > 0) addEdge(filters, EdgeKind::LowPass, filters.lowPassCutOff, dt);
  return true;
}

bool LMTRPluginEMEGFileConverter::askDecimation() {
  int32_t factor = host::dialogIntegerParameter(options.parametersFromDialog ? 4 : 3);
  if (factor < 1) {
    const double fs = values.samplingFrequency;
    const std::string prompt =
        formatText("Please provide a decimation factor if you want to downsample the data.<br>"
                   "- 1 will preserve the original sampling frequency of %.2f Hz<br>"
                   "- 2 will result in a sampling frequency of %.2f Hz<br>"
                   "- 10 will result in a sampling frequency of %.2f Hz",
                   fs, fs / 2, fs / 10);
    factor = host::integerInput(prompt.c_str(), 1, 1, 20);
    if (factor < 1) return abortRun(log);
  }
  filters.decimationFactor = factor;
  if (factor > 1) filters.stages.addFilterStage(EdgeKind::LowPass, 1.0 / factor, antiAliasOrder);
  return true;
}

bool LMTRPluginEMEGFileConverter::askNotches(int32_t mode) {
  filters.nrOfNotches = 0;
  if (mode == modeNone) return true;
  if (mode == modeFromDialog) {
    filters.nrOfNotches = 1;
    filters.notchFrequencies.push_back(static_cast<double>(host::dialogFloatParameter(2)));
    filters.notchWidths.push_back(static_cast<double>(host::dialogFloatParameter(3)));
    return true;
  }
  if (mode >= 0) return true;

  const int32_t count =
      host::integerInput("Please provide the required number of notches.", 0, 0, maxNrOfNotches);
  if (count < 0 || count > maxNrOfNotches) return abortRun(log);
  const double nyquist = values.samplingFrequency / 2;
  for (int32_t k = 1; k <= count; ++k) {
    const std::string frequencyPrompt =
        formatText("Please provide the frequency [0-%.2f] for notch #%d.", nyquist, k);
    const double frequency =
        static_cast<double>(host::floatInput(frequencyPrompt.c_str(), 0, 0, static_cast<float>(nyquist)));
    if (isCancelled(frequency)) return abortRun(log);

    const double widthBound = frequency > values.samplingFrequency / 4 ? nyquist - frequency : frequency;
    const std::string widthPrompt =
        formatText("Please provide the width [0-%.2f] for notch #%d.", widthBound, k);
    const double width =
        static_cast<double>(host::floatInput(widthPrompt.c_str(), 0, 0, static_cast<float>(widthBound)));
    if (isCancelled(width)) return abortRun(log);
    filters.notchFrequencies.push_back(frequency);
    filters.notchWidths.push_back(width);
  }
  filters.nrOfNotches = count;
  return true;
}

bool LMTRPluginEMEGFileConverter::askCutOff(int32_t mode, const char* edgeName, int dialogIndex,
                                            double& cutOff) {
  cutOff = 0;
  if (mode < 0) {
    const double nyquist = values.samplingFrequency / 2;
    const std::string prompt = formatText("Please provide the cut-frequency [0-%.2f] of the %s filter\n"
                                          "(leave 0 for no %s filtering).",
                                          nyquist, edgeName, edgeName);
    cutOff = static_cast<double>(host::floatInput(prompt.c_str(), 0, 0, static_cast<float>(nyquist)));
  } else if (mode == modeFromDialog) {
    cutOff = static_cast<double>(host::dialogFloatParameter(dialogIndex));
  }
  return !isCancelled(cutOff) || abortRun(log);
}

} // namespace emeg
