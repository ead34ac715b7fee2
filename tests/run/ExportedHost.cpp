#include "tests/run/ExportedHost.h"

namespace emeg::test {
namespace {

ExportedHost* current = nullptr;
constexpr int cancelled = -1;

} // namespace

ExportedHost::ExportedHost() {
  current = this;
}
ExportedHost::~ExportedHost() {
  current = nullptr;
}

void ExportedHost::record(const std::string& function, const char* text) {
  calls.push_back(function + ": " + text);
}

} // namespace emeg::test

using emeg::test::cancelled;
using emeg::test::current;

#define EMEG_HOST_FUNCTION extern "C" __attribute__((visibility("default")))

EMEG_HOST_FUNCTION int lmGetVersionOfLumetra(int* major, int* minor, int* revision) {
  *major = 2;
  *minor = 1;
  *revision = 0;
  if (current != nullptr) current->record("lmGetVersionOfLumetra", "");
  return 1;
}

EMEG_HOST_FUNCTION void lmLogText(const char* text) {
  if (current == nullptr) return;
  current->record("lmLogText", text);
  if (current->onLog) current->onLog(text);
}

EMEG_HOST_FUNCTION void lmMessageBox(const char* text) {
  if (current == nullptr) return;
  current->record("lmMessageBox", text);
  current->messageBoxes.push_back(text);
}

EMEG_HOST_FUNCTION int lmYesNoMessageBox(const char* question) {
  if (current == nullptr) return cancelled;
  current->record("lmYesNoMessageBox", question);
  return current->volumeWise;
}

EMEG_HOST_FUNCTION int lmGetIntegerInput(const char* prompt, int, int, int maximum) {
  if (current == nullptr) return cancelled;
  current->record("lmGetIntegerInput", prompt);
  return maximum == 2 ? current->correctionChoice : current->window;
}

EMEG_HOST_FUNCTION float lmGetFloatInput(const char* prompt, float, float, float) {
  if (current != nullptr) current->record("lmGetFloatInput", prompt);
  return cancelled;
}

EMEG_HOST_FUNCTION void lmGetTextInput(const char* prompt, const char*, char* result) {
  if (current != nullptr) current->record("lmGetTextInput", prompt);
  *result = '\0';
}

EMEG_HOST_FUNCTION int lmGetOpenFileName(const char*, const char* pattern, const char*, char* path) {
  constexpr size_t longestPath = 255;
  if (current == nullptr) return 0;
  current->record("lmGetOpenFileName", pattern);
  const auto chosen = current->files.find(pattern);
  if (chosen == current->files.end() || chosen->second.size() > longestPath) return 0;
  path[chosen->second.copy(path, longestPath)] = '\0';
  return 1;
}

EMEG_HOST_FUNCTION void lmUpdateActiveWindow() {
  if (current != nullptr) current->record("lmUpdateActiveWindow", "");
}

EMEG_HOST_FUNCTION int lmGetDlgIntegerParameter(int index) {
  if (current != nullptr) current->record("lmGetDlgIntegerParameter", std::to_string(index).c_str());
  return cancelled;
}

EMEG_HOST_FUNCTION float lmGetDlgFloatParameter(int index) {
  if (current != nullptr) current->record("lmGetDlgFloatParameter", std::to_string(index).c_str());
  return cancelled;
}
