#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

namespace emeg {

bool LMTRPluginEMEGFileConverter::askTimeInterval() {
  if (!options.selectTimeInterval) return true;
  if (host::dialogIntegerParameter(2) != 1 && !options.parametersFromDialog) {
    const double duration = static_cast<double>(span.durationMs);
    const std::string startPrompt =
        formatText("Please indicate the starting point of the time interval to export.<br>"
                   "Starting time must stay between 0 and %.2f ms.",
                   duration);
    values.intervalStartMs = host::floatInput(startPrompt.c_str(), 0, 0, span.durationMs);
    if (!(values.intervalStartMs >= 0)) return abortRun(log);

    const std::string endPrompt =
        formatText("Please indicate the end point of the time interval to export.<br>"
                   "End time must stay between %.2f and %.2f ms.",
                   static_cast<double>(values.intervalStartMs), duration);
    values.intervalEndMs =
        host::floatInput(endPrompt.c_str(), span.durationMs, values.intervalStartMs, span.durationMs);
    if (!(values.intervalEndMs >= 0)) return abortRun(log);
  }
  switches.intervalRestricted = values.intervalStartMs > 0 || values.intervalEndMs < span.durationMs;
  return true;
}

} // namespace emeg
