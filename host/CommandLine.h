#pragma once

#include <filesystem>
#include <optional>

namespace emeg {

/// Exit statuses of the program.
enum ExitStatus {
  exitSucceeded = 0, ///< execute returned true
  exitFailed = 1,    ///< execute returned false
  exitUnusable = 2   ///< usage error; plug-in, answers or transcript cannot be used
};

struct CommandLine {
  std::filesystem::path plugin;
  std::optional<std::filesystem::path> answers;
  std::optional<std::filesystem::path> transcript;
  bool quiet = false;
};

/// Reads the arguments. Nothing when the program is to end with `exitStatus`: help was shown, or what is
/// wrong with the arguments.
std::optional<CommandLine> readCommandLine(int argc, const char* const* argv, int& exitStatus);

} // namespace emeg
