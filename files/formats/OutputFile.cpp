#include "files/formats/OutputFile.h"

#include "files/formats/FileSystem.h"

#include <cerrno>
#include <cstdio>

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
  switch (pathKind(finalPath)) {
  case PathKind::Folder:
    errno = EISDIR;
    return false;
  case PathKind::Pipe:
  case PathKind::Device:
    errno = EINVAL;
    return false;
  default:
    break;
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
  if (!file_.close() || !replaceFile(temporaryPath_, finalPath_)) {
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
