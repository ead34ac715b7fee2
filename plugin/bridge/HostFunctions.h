#pragma once

#include <string>

namespace emeg {

/// The host's exported C functions that this plug-in calls. Every entry is null until resolveHostFunctions()
/// ran, and stays null when the host does not export it. All texts are null-terminated 8-bit texts.
struct HostFunctionTable {
  /// Fills major, minor and revision.
  int (*lmGetVersionOfLumetra)(int*, int*, int*) = nullptr;
  /// Appends one line to the log pane.
  void (*lmLogText)(const char*) = nullptr;
  void (*lmMessageBox)(const char*) = nullptr;
  /// 1 yes, 0 no, negative: cancelled.
  int (*lmYesNoMessageBox)(const char*) = nullptr;
  /// Prompt, default, minimum, maximum; negative: cancelled.
  int (*lmGetIntegerInput)(const char*, int, int, int) = nullptr;
  float (*lmGetFloatInput)(const char*, float, float, float) = nullptr;
  /// Prompt, default text, buffer that receives the answer; empty: no text was given.
  void (*lmGetTextInput)(const char*, const char*, char*) = nullptr;
  /// Title, pattern, description, buffer of 256 characters that receives the path; 0: cancelled.
  int (*lmGetOpenFileName)(const char*, const char*, const char*, char*) = nullptr;
  void (*lmUpdateActiveWindow)() = nullptr;
  /// Parameters of the host's plug-in dialogue by index; negative: not set.
  int (*lmGetDlgIntegerParameter)(int) = nullptr;
  float (*lmGetDlgFloatParameter)(int) = nullptr;
};

/// The table of this process. Written by resolveHostFunctions() at the start of every execution.
extern HostFunctionTable hostFunctions;

/// Looks the functions up by name in the running program, the version function first. False when the program
/// or its version function is not there; any other missing function leaves a null entry.
bool resolveHostFunctions();

/// Lexicographic comparison of two version triples: true when the first is at least the required one.
bool isHostVersionAtLeast(int major, int minor, int revision, int requiredMajor, int requiredMinor,
                          int requiredRevision);

struct HostVersion {
  int major = 0, minor = 0, revision = 0;
};

/// The only way to the host: each call checks its table entry. A missing entry acts as a cancelled dialogue,
/// a parameter that is not set, or does nothing.
namespace host {

HostVersion version();
void logText(const char* text);
void messageBox(const char* text);
int yesNoMessageBox(const char* question);
int integerInput(const char* prompt, int defaultValue, int minimum, int maximum);
float floatInput(const char* prompt, float defaultValue, float minimum, float maximum);
/// The text typed by the user; empty: none was given.
std::string textInput(const char* prompt, const std::string& defaultText);
/// True when a file was chosen; its path is then in `path`. The host's active window is repainted.
bool openFileName(const char* title, const char* pattern, const char* description, std::string& path);
int dialogIntegerParameter(int index);
float dialogFloatParameter(int index);

} // namespace host
} // namespace emeg
