#include "files/formats/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace emeg {

namespace {

constexpr size_t longestFileName = 255;

std::string temporaryPathOf(const std::string& finalPath) {
  const std::string ending = ".part";
  const size_t nameStart = finalPath.find_last_of("/\\") + 1; // 0 without a separator
  return finalPath.substr(0, nameStart + longestFileName - ending.size()) + ending;
}

} // namespace

OutputFile::~OutputFile() {
  discard();
}

bool OutputFile::create(const std::string& finalPath) {
  discard();
  if (finalPath.empty()) {
    errno = ENOENT;
    return false;
  }
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(finalPath, ignored);
  if (std::filesystem::is_directory(status)) {
    errno = EISDIR;
    return false;
  }
  if (std::filesystem::is_other(status)) {
    errno = EINVAL;
    return false;
  }
  finalPath_ = finalPath;
  temporaryPath_ = temporaryPathOf(finalPath);
  if (file_.create(temporaryPath_)) return true;
  finalPath_.clear();
  return false;
}

bool OutputFile::commit() {
  if (finalPath_.empty()) {
    errno = EBADF;
    return false;
  }
  if (!file_.close() || std::rename(temporaryPath_.c_str(), finalPath_.c_str()) != 0) {
    discard();
    return false;
  }
  finalPath_.clear();
  return true;
}

void OutputFile::discard() {
  if (finalPath_.empty()) return;
  const int reason = errno;
  file_.close();
  std::remove(temporaryPath_.c_str());
  finalPath_.clear();
  errno = reason;
}

} // namespace emeg
