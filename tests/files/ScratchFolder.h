#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>

namespace emeg {

/// An empty folder for one test, removed with everything in it.
class ScratchFolder {
public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "emeg-files-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
    folder_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  bool has(const std::string& name) const { return std::filesystem::exists(folder_ / name); }
  long nrOfEntries() const {
    return std::distance(std::filesystem::directory_iterator(folder_), std::filesystem::directory_iterator());
  }

  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }
  std::string read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

private:
  std::filesystem::path folder_;
};

} // namespace emeg
