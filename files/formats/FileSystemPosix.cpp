#include "files/formats/FileSystem.h"

#include <cstdio>
#include <filesystem>

namespace emeg {

PathKind pathKind(const std::string& path) {
  std::error_code ignored;
  switch (std::filesystem::status(path, ignored).type()) {
  case std::filesystem::file_type::none:
  case std::filesystem::file_type::not_found:
    return PathKind::Missing;
  case std::filesystem::file_type::directory:
    return PathKind::Folder;
  case std::filesystem::file_type::fifo:
    return PathKind::Pipe;
  case std::filesystem::file_type::block:
  case std::filesystem::file_type::character:
  case std::filesystem::file_type::socket:
  case std::filesystem::file_type::unknown:
    return PathKind::Device;
  default:
    return PathKind::RegularFile;
  }
}

bool replaceFile(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace emeg
