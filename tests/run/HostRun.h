#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace emeg::test {

/// What a run of a plug-in in the stand-in host left behind.
struct HostRunResult {
  /// As of ChildResult.
  int exitStatus = -1;
  /// Every call in order, the last one being what execute returned.
  std::vector<nlohmann::json> transcript;
  std::string standardOutput, standardError;

  /// Texts of the log lines, of the message boxes.
  std::vector<std::string> logLines() const;
  std::vector<std::string> messageBoxes() const;
  /// The calls that ask the user something (yes/no, integer, float, text, file), whole lines of the
  /// transcript.
  std::vector<nlohmann::json> questions() const;
  /// All calls of one name.
  std::vector<nlohmann::json> calls(const std::string& name) const;
};

/// Runs a plug-in in the stand-in host. The program starts in `workFolder`, which is made when it is missing,
/// so that relative file choices are found there; the host's own files go to its folder "host-run".
struct HostRun {
  std::filesystem::path plugin;
  std::filesystem::path workFolder;
  /// Further arguments and environment variables of the host.
  std::vector<std::string> arguments;
  std::map<std::string, std::string> environment;
  /// Called in the new process before the host starts, for limits and privileges.
  std::function<void()> beforeStart;
  /// A copy of the host to run instead of the one that was built.
  std::filesystem::path program = {};

  /// A run with these answers (host/README.md describes them).
  HostRunResult withAnswers(const nlohmann::json& answers) const;
  /// A run whose questions are answered by these typed lines, as if at a terminal.
  HostRunResult withTyped(const std::string& lines) const;

private:
  HostRunResult run(const std::optional<std::string>& answers, const std::string& typed) const;
};

} // namespace emeg::test
