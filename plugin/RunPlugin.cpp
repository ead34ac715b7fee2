#include "plugin/RunPlugin.h"

#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/Converter.h"
#include "plugin/converter/messages/Text.h"

#include <exception>
#include <new>
#include <optional>

namespace {

/// The converter of the run. Not on the stack: a host may leave a function that it was asked to run in a way
/// that skips our frames and their destructors (a structured exception of Windows, a long jump). The
/// abandoned run's streams, chunk files and buffers are then still known here, and go with the next run or
/// with the library.
std::optional<emeg::EMEGArtifactPreprocessor> currentRun;

/// Ends the run, whatever way it went.
class RunGuard {
public:
  RunGuard() = default;
  ~RunGuard() { currentRun.reset(); }
  RunGuard(const RunGuard&) = delete;
  RunGuard& operator=(const RunGuard&) = delete;
};

bool runConverter() {
  const RunGuard guard;
  emeg::EMEGArtifactPreprocessor& converter = currentRun.emplace("// EMEG artifacts > ", true);
  converter.options.isEEG = true;
  converter.options.selectChannels = false;
  converter.options.selectTimeInterval = false;
  converter.options.applyFilters = false;
  converter.options.correctArtifacts = true;
  converter.options.applyScaling = true;
  converter.options.offerAverageReference = false;
  converter.options.forceHeaderUpdate = false;
  // Stricter than the check before: the run refuses older hosts with its own message.
  return converter.emeg::EMEGArtifactPreprocessor::run(2, 1, 0);
}

bool runPlugin() {
  if (!emeg::resolveHostFunctions()) return false;
  const emeg::HostVersion version = emeg::host::version();
  if (!emeg::isHostVersionAtLeast(version.major, version.minor, version.revision, 1, 9, 9)) {
    emeg::host::messageBox("Can not execute this plugin - Lumetra version 1.9.9 or higher required.");
    return false;
  }
  try {
    return runConverter();
  } catch (const std::bad_alloc&) {
    emeg::host::messageBox("Not enough memory");
  } catch (const std::exception& error) {
    emeg::host::messageBox(
        emeg::formatText("The run was ended by an unexpected error: %s", error.what()).c_str());
  } catch (...) {
    emeg::host::messageBox("The run was ended by an unexpected error.");
  }
  return false;
}

} // namespace

extern "C" int emegRunPlugin() {
  try {
    return runPlugin() ? 1 : 0;
  } catch (...) {
    // The host's own functions threw, the message box included: nothing is left to say it with.
    return 0;
  }
}

extern "C" void* emegAllocateObject(unsigned long long nrOfBytes) {
  return ::operator new(nrOfBytes, std::nothrow);
}

extern "C" void emegFreeObject(void* object) {
  ::operator delete(object);
}
