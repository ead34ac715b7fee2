#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

namespace emeg {

namespace {
constexpr int32_t ctcFloat32 = 1;
constexpr int32_t ctcMultiplexed = 2;
} // namespace

bool LMTRPluginEMEGFileConverter::run(int32_t major, int32_t minor, int32_t revision) {
  return checkHostVersion(major, minor, revision) && defineParameters() && processChannels() &&
         writeCtc(ctcFloat32, ctcMultiplexed) && writeProtocols() && firstOutputHook() &&
         secondOutputHook() && writeCcd() && finishRun();
}

// The artifact plug-in leaves the output hooks of subclasses out on purpose.
bool EMEGArtifactPreprocessor::run(int32_t major, int32_t minor, int32_t revision) {
  return checkHostVersion(major, minor, revision) && defineParameters() && processChannels() &&
         writeCtc(ctcFloat32, ctcMultiplexed) && writeProtocols() && writeCcd() && finishRun();
}

bool LMTRPluginEMEGFileConverter::checkHostVersion(int32_t major, int32_t minor, int32_t revision) {
  requiredMajorVersion = major;
  requiredMinorVersion = minor;
  requiredRevision = revision;
  const HostVersion host = host::version();
  if (isHostVersionAtLeast(host.major, host.minor, host.revision, major, minor, revision)) return true;
  return showError(formatText("Can not execute this plugin - Lumetra version %d.%d.%d or higher required.",
                              major, minor, revision));
}

bool LMTRPluginEMEGFileConverter::defineParameters() {
  return openInput() && askParameters() && computeChunkLayout() && buildOutputName() && checkOutputPath() &&
         createChunks() && afterChunkFilesHook();
}

bool LMTRPluginEMEGFileConverter::finishRun() {
  log.logProgress("Operations successfully executed!");
  return true;
}

} // namespace emeg
