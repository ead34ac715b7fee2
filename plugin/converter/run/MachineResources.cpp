#include "plugin/converter/run/MachineResources.h"

#include "plugin/converter/messages/Text.h"

namespace emeg {

namespace {

double megabytes(uint64_t bytes) {
  return static_cast<double>(bytes) / 1e6;
}

} // namespace

std::string describeShortage(const MachineResources& needed, const MachineResources& available,
                             const std::string& path) {
  std::string text;
  if (needed.memory > available.memory) {
    text = formatText("Not enough memory: %.0f MB are needed, %.0f MB are available.<br>"
                      "Close other programs or process a shorter recording.",
                      megabytes(needed.memory), megabytes(available.memory));
  }
  if (needed.disk > available.disk) {
    if (!text.empty()) text += "<br>";
    text += formatText("Not enough disk space beside %s: %.0f MB are needed, %.0f MB are available.<br>"
                       "Free some space or move the recording to another disk.",
                       path.c_str(), megabytes(needed.disk), megabytes(available.disk));
  }
  return text;
}

} // namespace emeg
