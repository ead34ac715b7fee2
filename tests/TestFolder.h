#pragma once

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <vector>

namespace emeg {

/// An empty folder of its own for one test, removed with everything in it.
class TestFolder {
public:
  TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "emeg-test-").string() + std::string(6, 'X');
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string path(const std::string& name) const { return path_ + "/" + name; }
  std::string operator/(const std::string& name) const { return path(name); }
  const std::string& path() const { return path_; }

  /// Names of the files and folders in it, sorted.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

private:
  std::string path_;
};

} // namespace emeg
