#pragma once

#include <filesystem>
#include <string>

/// What a command printed on both outputs, and its exit status.
struct CommandResult {
  std::string output;
  int status = 0;
};
CommandResult runCommand(const std::string& command);

/// A folder that this program alone uses, with the project installed in `prefix`. Gone with the object.
class InstalledTree {
public:
  /// `component` "" installs what is installed when nobody chooses.
  explicit InstalledTree(const std::string& component = "");
  ~InstalledTree();
  InstalledTree(const InstalledTree&) = delete;
  InstalledTree& operator=(const InstalledTree&) = delete;

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path prefix() const { return folder_ / "prefix"; }
  bool has(const std::string& file) const { return std::filesystem::exists(prefix() / file); }

private:
  std::filesystem::path folder_;
};
