#pragma once

#include <iosfwd>

namespace emeg {

class Answers;
class Transcript;
class User;

/// Everything that the host's functions speak to. All of it outlives the session.
struct HostSession {
  User& user;
  const Answers& settings; ///< version and dialogue parameters
  Transcript& transcript;
  std::ostream* screen; ///< shows log lines and message boxes; null: they are not shown
  std::ostream& notes;  ///< about answers that cannot be taken
};

/// Makes a session the one that the functions below serve, until this object ends. One at a time in a
/// process. Without a session every question is cancelled and nothing is shown.
class HostSessionScope {
public:
  explicit HostSessionScope(HostSession& session);
  ~HostSessionScope();
  HostSessionScope(const HostSessionScope&) = delete;
  HostSessionScope& operator=(const HostSessionScope&) = delete;
};

} // namespace emeg

#define LUMETRA_EXPORT __attribute__((visibility("default")))

// The functions that plug-ins look up by name in the running program. All texts are null-terminated; a null
// pointer counts as an empty text, and a null result buffer is not written. Result buffers hold 256
// characters. No exception leaves these functions: one that does occur cancels the question.
extern "C" {

/// Fills the three numbers; returns 1.
LUMETRA_EXPORT int lmGetVersionOfLumetra(int* major, int* minor, int* revision);
LUMETRA_EXPORT void lmLogText(const char* text);
LUMETRA_EXPORT void lmMessageBox(const char* text);
/// 1 yes, 0 no, -1 cancelled.
LUMETRA_EXPORT int lmYesNoMessageBox(const char* question);
/// -1 when cancelled.
LUMETRA_EXPORT int lmGetIntegerInput(const char* prompt, int defaultValue, int minimum, int maximum);
/// -1 when cancelled.
LUMETRA_EXPORT float lmGetFloatInput(const char* prompt, float defaultValue, float minimum, float maximum);
/// An empty text when cancelled. `result` may be the buffer that holds the default text.
LUMETRA_EXPORT void lmGetTextInput(const char* prompt, const char* defaultText, char* result);
/// 1 when a file was chosen; 0, with an empty path, when cancelled.
LUMETRA_EXPORT int lmGetOpenFileName(const char* title, const char* pattern, const char* description,
                                     char* path);
/// There is no window here: only the transcript knows of the call.
LUMETRA_EXPORT void lmUpdateActiveWindow();
/// -1 when the parameter was not given.
LUMETRA_EXPORT int lmGetDlgIntegerParameter(int index);
/// -1 when the parameter was not given.
LUMETRA_EXPORT float lmGetDlgFloatParameter(int index);
}
