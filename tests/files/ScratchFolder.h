#pragma once

#include "tests/TestFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace emeg {

/// A test's folder whose files are written and read as strings.
class ScratchFolder : public TestFolder {
public:
  bool has(const std::string& name) const { return std::filesystem::exists(path(name)); }
  long nrOfEntries() const { return static_cast<long>(names().size()); }

  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }
  std::string read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
};

} // namespace emeg
