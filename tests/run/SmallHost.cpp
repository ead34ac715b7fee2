// A host of the smallest kind: small-host PLUGIN [CTC] [FUNCTION]. It runs the plug-in once on the recording
// and prints every call as a line. The function of that name throws. Which functions the program exports is
// decided when it is linked. Exit status: 0 and 1 for what execute returned, 3 when an exception left it.

#include "host/PluginInterface.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

std::string chosenPath;
std::string throwingFunction;
constexpr int cancelled = -1;

void record(const char* function, const char* text) {
  std::printf("%s: %s\n", function, text);
  std::fflush(stdout);
  if (throwingFunction == function) throw std::runtime_error("the host failed");
}

} // namespace

#define EMEG_HOST_FUNCTION extern "C" __attribute__((visibility("default"), used))

EMEG_HOST_FUNCTION int lmGetVersionOfLumetra(int* major, int* minor, int* revision) {
  *major = 3;
  *minor = 0;
  *revision = 0;
  record("lmGetVersionOfLumetra", "");
  return 1;
}
EMEG_HOST_FUNCTION void lmLogText(const char* text) {
  record("lmLogText", text);
}
EMEG_HOST_FUNCTION void lmMessageBox(const char* text) {
  record("lmMessageBox", text);
}
EMEG_HOST_FUNCTION int lmYesNoMessageBox(const char*) {
  record("lmYesNoMessageBox", "");
  return 0;
}
EMEG_HOST_FUNCTION int lmGetIntegerInput(const char*, int defaultValue, int, int) {
  record("lmGetIntegerInput", "");
  return defaultValue;
}
EMEG_HOST_FUNCTION float lmGetFloatInput(const char*, float defaultValue, float, float) {
  record("lmGetFloatInput", "");
  return defaultValue;
}
EMEG_HOST_FUNCTION void lmGetTextInput(const char*, const char*, char*) {
  record("lmGetTextInput", "");
}
EMEG_HOST_FUNCTION int lmGetOpenFileName(const char*, const char* pattern, const char*, char* path) {
  record("lmGetOpenFileName", pattern);
  if (std::strcmp(pattern, "*.ctc") != 0 || chosenPath.empty()) return 0;
  path[chosenPath.copy(path, 255)] = '\0';
  return 1;
}
EMEG_HOST_FUNCTION void lmUpdateActiveWindow() {
  record("lmUpdateActiveWindow", "");
}
EMEG_HOST_FUNCTION int lmGetDlgIntegerParameter(int) {
  record("lmGetDlgIntegerParameter", "");
  return cancelled;
}
EMEG_HOST_FUNCTION float lmGetDlgFloatParameter(int) {
  record("lmGetDlgFloatParameter", "");
  return cancelled;
}

// Only the order of the virtual operations is shared with the library.
__attribute__((no_sanitize("vptr"))) int main(int argc, char** argv) {
  if (argc < 2) return 2;
  if (argc > 2) chosenPath = argv[2];
  if (argc > 3) throwingFunction = argv[3];
  void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return 2;
  LMTRPluginInterface* const object =
      reinterpret_cast<LMTRPluginInterface* (*)()>(dlsym(library, "createPlugin"))();
  int status = 3;
  try {
    status = object->execute() ? 0 : 1;
  } catch (...) {
    std::puts("an exception left execute");
  }
  delete object;
  return status;
}
