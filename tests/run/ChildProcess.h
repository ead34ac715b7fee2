#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace emeg::test {

/// A program to run to its end, away from the test's own process.
struct ChildProcess {
  std::filesystem::path program;
  std::vector<std::string> arguments;
  /// The program starts in this existing folder.
  std::filesystem::path folder = ".";
  /// What it reads on its standard input: this file.
  std::filesystem::path input = "/dev/null";
  /// Variables added to the environment of the test.
  std::map<std::string, std::string> environment;
  /// Called in the new process before the program starts, for limits and privileges. It must not throw.
  std::function<void()> beforeStart;
  std::chrono::seconds timeLimit{300};
};

struct ChildResult {
  /// The program's exit status; 128 + signal when a signal ended it, 126 when it could not be started, -1
  /// when it was stopped because its time was over.
  int exitStatus = -1;
};

/// Runs the program with its output going to the two files. Throws std::system_error when no process can be
/// made.
ChildResult runChild(const ChildProcess& child, const std::filesystem::path& standardOutput,
                     const std::filesystem::path& standardError);

/// All bytes of a file; empty when it cannot be opened.
std::string contentsOf(const std::filesystem::path& file);

} // namespace emeg::test
