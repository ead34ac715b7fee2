#include "plugin/bridge/HostFunctions.h"

#include "plugin/bridge/HostModule.h"

#include <array>
#include <cstdio>
#include <type_traits>

namespace emeg {

HostFunctionTable hostFunctions;

namespace {

template <typename Function>
void lookUp(const HostModule& module, const char* name, Function*& entry) {
  entry = reinterpret_cast<Function*>(module.function(name));
}

} // namespace

bool resolveHostFunctions() {
  const HostModule module;
  if (!module.isThere()) return false;

  HostFunctionTable& table = hostFunctions;
  lookUp(module, "lmGetVersionOfLumetra", table.lmGetVersionOfLumetra);
  if (table.lmGetVersionOfLumetra == nullptr) return false;

  lookUp(module, "lmLogText", table.lmLogText);
  lookUp(module, "lmMessageBox", table.lmMessageBox);
  lookUp(module, "lmYesNoMessageBox", table.lmYesNoMessageBox);
  lookUp(module, "lmGetIntegerInput", table.lmGetIntegerInput);
  lookUp(module, "lmGetFloatInput", table.lmGetFloatInput);
  lookUp(module, "lmGetTextInput", table.lmGetTextInput);
  lookUp(module, "lmGetOpenFileName", table.lmGetOpenFileName);
  lookUp(module, "lmUpdateActiveWindow", table.lmUpdateActiveWindow);
  lookUp(module, "lmGetDlgIntegerParameter", table.lmGetDlgIntegerParameter);
  lookUp(module, "lmGetDlgFloatParameter", table.lmGetDlgFloatParameter);
  return true;
}

bool isHostVersionAtLeast(int major, int minor, int revision, int requiredMajor, int requiredMinor,
                          int requiredRevision) {
  if (requiredMajor != major) return requiredMajor < major;
  if (requiredMinor != minor) return requiredMinor < minor;
  return revision >= requiredRevision;
}

namespace host {

namespace {
constexpr int cancelled = -1;

template <typename Result, typename... Parameters, typename... Arguments>
Result call(Result (*function)(Parameters...), Arguments... arguments) {
  if constexpr (std::is_void_v<Result>) {
    callHost([&] { function(arguments...); });
  } else {
    Result result{};
    callHost([&] { result = function(arguments...); });
    return result;
  }
}

} // namespace

HostVersion version() {
  HostVersion v;
  if (hostFunctions.lmGetVersionOfLumetra != nullptr)
    call(hostFunctions.lmGetVersionOfLumetra, &v.major, &v.minor, &v.revision);
  return v;
}

void logText(const char* text) {
  if (hostFunctions.lmLogText != nullptr) call(hostFunctions.lmLogText, text);
}

void messageBox(const char* text) {
  if (hostFunctions.lmMessageBox != nullptr) call(hostFunctions.lmMessageBox, text);
}

int yesNoMessageBox(const char* question) {
  return hostFunctions.lmYesNoMessageBox != nullptr ? call(hostFunctions.lmYesNoMessageBox, question)
                                                    : cancelled;
}

int integerInput(const char* prompt, int defaultValue, int minimum, int maximum) {
  if (hostFunctions.lmGetIntegerInput == nullptr) return cancelled;
  return call(hostFunctions.lmGetIntegerInput, prompt, defaultValue, minimum, maximum);
}

float floatInput(const char* prompt, float defaultValue, float minimum, float maximum) {
  if (hostFunctions.lmGetFloatInput == nullptr) return static_cast<float>(cancelled);
  return call(hostFunctions.lmGetFloatInput, prompt, defaultValue, minimum, maximum);
}

std::string textInput(const char* prompt, const std::string& defaultText) {
  if (hostFunctions.lmGetTextInput == nullptr) return {};
  // The host knows this buffer as 256 characters long; what lies behind them is a margin.
  std::array<char, 4096> buffer{};
  std::snprintf(buffer.data(), 256, "%s", defaultText.c_str());
  call(hostFunctions.lmGetTextInput, prompt, buffer.data(), buffer.data());
  buffer.back() = 0;
  return buffer.data();
}

bool openFileName(const char* title, const char* pattern, const char* description, std::string& path) {
  if (hostFunctions.lmGetOpenFileName == nullptr) return false;
  std::array<char, 4096> buffer{};
  if (call(hostFunctions.lmGetOpenFileName, title, pattern, description, buffer.data()) == 0) return false;
  buffer.back() = 0;
  path = buffer.data();
  if (hostFunctions.lmUpdateActiveWindow != nullptr) call(hostFunctions.lmUpdateActiveWindow);
  return true;
}

int dialogIntegerParameter(int index) {
  if (hostFunctions.lmGetDlgIntegerParameter == nullptr) return cancelled;
  return call(hostFunctions.lmGetDlgIntegerParameter, index);
}

float dialogFloatParameter(int index) {
  if (hostFunctions.lmGetDlgFloatParameter == nullptr) return static_cast<float>(cancelled);
  return call(hostFunctions.lmGetDlgFloatParameter, index);
}

} // namespace host
} // namespace emeg
