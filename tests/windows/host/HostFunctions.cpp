// The workstation's exported functions. Every call is a line on the standard output.

#include "tests/windows/host/Platform.h"
#include "tests/windows/host/Settings.h"

#define HOST_FUNCTION extern "C" __declspec(dllexport)

static constexpr unsigned long ownStructuredException = 0xE0001234;

/// What the host throws: a class, as programs do.
struct HostError {
  int number;
};

static void leaveThePluginAt(const char* text) {
  if (settings.leaveAt == nullptr || strstr(text, settings.leaveAt) == nullptr) return;
  settings.leaveAt = settings.ccd = settings.prt = settings.ctc = nullptr;
  if (strcmp(settings.leave, "raise") == 0) RaiseException(ownStructuredException, 0, 0, nullptr);
  throw HostError{7};
}

HOST_FUNCTION int lmGetVersionOfLumetra(int* major, int* minor, int* revision) {
  *major = settings.major;
  *minor = settings.minor;
  *revision = settings.revision;
  printf("version\n");
  leaveThePluginAt("version");
  return 1;
}

HOST_FUNCTION void lmLogText(const char* text) {
  printf("log: %s\n", text);
  leaveThePluginAt(text);
}

HOST_FUNCTION void lmMessageBox(const char* text) {
  printf("box: %s\n", text);
  leaveThePluginAt(text);
}

HOST_FUNCTION int lmYesNoMessageBox(const char* question) {
  printf("yes or no: %s\n", question);
  leaveThePluginAt(question);
  return 0;
}

HOST_FUNCTION int lmGetIntegerInput(const char* prompt, int byDefault, int minimum, int maximum) {
  const int answer = strstr(prompt, "artifact correction") != nullptr ? settings.correction : byDefault;
  printf("integer: %s [%d, %d to %d] %d\n", prompt, byDefault, minimum, maximum, answer);
  leaveThePluginAt(prompt);
  return answer;
}

HOST_FUNCTION float lmGetFloatInput(const char* prompt, float byDefault, float minimum, float maximum) {
  printf("float: %s [%g, %g to %g]\n", prompt, static_cast<double>(byDefault), static_cast<double>(minimum),
         static_cast<double>(maximum));
  return byDefault;
}

HOST_FUNCTION void lmGetTextInput(const char* prompt, const char* byDefault, char* answer) {
  printf("text: %s [%s]\n", prompt, byDefault);
  if (answer != byDefault) strcpy(answer, byDefault);
}

HOST_FUNCTION int lmGetOpenFileName(const char* title, const char* pattern, const char* description,
                                    char* path) {
  const char* const chosen = strcmp(pattern, "*.ccd") == 0   ? settings.ccd
                             : strcmp(pattern, "*.prt") == 0 ? settings.prt
                                                             : settings.ctc;
  printf("file: %s [%s, %s] %s\n", title, pattern, description, chosen != nullptr ? chosen : "none");
  leaveThePluginAt(title);
  if (chosen == nullptr || strlen(chosen) > 255) return 0;
  strcpy(path, chosen);
  return 1;
}

HOST_FUNCTION void lmUpdateActiveWindow() {
  printf("update\n");
  leaveThePluginAt("update");
}

HOST_FUNCTION int lmGetDlgIntegerParameter(int) {
  leaveThePluginAt("integer parameter");
  return -1;
}

HOST_FUNCTION float lmGetDlgFloatParameter(int) {
  leaveThePluginAt("float parameter");
  return -1.0f;
}
