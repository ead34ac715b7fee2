#pragma once

/// What the command line says: "name=value" words.
struct Settings {
  const char* plugin = "EMEGArtifactPlugin.dll";
  int major = 2, minor = 1, revision = 0;
  const char* ccd = nullptr; ///< chosen file; null: the dialogue is cancelled
  const char* prt = nullptr;
  const char* ctc = nullptr;
  int correction = 1;
  int executions = 1;
  /// The host leaves one of its functions at the first text, prompt or name with this part, in the way of
  /// `leave`: "throw" a C++ exception, "raise" a structured one. From then on it cancels all file dialogues.
  const char* leaveAt = nullptr;
  const char* leave = "throw";
  const char* watch = nullptr; ///< a file: is it there after each execution?
};

extern Settings settings;

/// Reads the command line of this process. False after naming the word that is not understood.
bool readSettings();
