#include "files/formats/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace emeg {

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
  if (file_.create(temporaryPath())) return true;
  finalPath_.clear();
  return false;
}

bool OutputFile::commit() {
  if (finalPath_.empty()) {
    errno = EBADF;
    return false;
  }
  if (!file_.close() || std::rename(temporaryPath().c_str(), finalPath_.c_str()) != 0) {
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
  std::remove(temporaryPath().c_str());
  finalPath_.clear();
  errno = reason;
}

} // namespace emeg
