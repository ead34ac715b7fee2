#include "files/exchange/PendingFiles.h"

#include "files/exchange/Recording.h"
#include "files/exchange/TemporaryNames.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <unistd.h>

namespace emeg {

namespace {

namespace fs = std::filesystem;

constexpr size_t longestNamePart = 200; // of the 255 bytes a file name may have
constexpr int mostAttempts = 100;

std::string temporaryPathFor(const std::string& finalPath) {
  std::random_device random;
  std::array<char, 32> number{};
  std::snprintf(number.data(), number.size(), "%08x%08x", random(), random());
  const fs::path path(finalPath);
  const std::string name = path.filename().string().substr(0, longestNamePart);
  return (path.parent_path() / ("." + name + "." + number.data() + ".part")).string();
}

/// Creates an empty file that was not there before; false when the name is taken.
bool reserve(const std::string& path) {
  const int file = open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
  if (file < 0) return false;
  close(file);
  return true;
}

/// False with EEXIST when there is a file of the final name, however late it came.
bool renameToFreeName(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system without that operation: a second name, where it has them, is never given to an existing
  // file.
  if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
  if (errno == EEXIST) return false;
  if (fs::exists(fs::symlink_status(to))) {
    errno = EEXIST;
    return false;
  }
  return std::rename(from.c_str(), to.c_str()) == 0;
}

std::string existsAlready(const std::string& path) {
  return "\"" + path + "\" exists already; choose another name or allow it to be replaced (--force).";
}

} // namespace

std::string writeFailure(const std::string& path) {
  const int error = errno;
  std::string text =
      "\"" + path + "\" cannot be written: " + (error != 0 ? std::strerror(error) : "unknown error") + ". ";
  if (error == ENOENT) return text + "Make the folder first, or choose another one.";
  if (error == ENOSPC || error == EFBIG || error == EDQUOT)
    return text + "Make room there, or choose another folder.";
  return text + "Choose a folder where files can be written.";
}

PendingFiles::~PendingFiles() {
  removeTemporaries();
}

void PendingFiles::removeTemporaries() {
  for (const File& file : files_) {
    if (file.temporaryPath.empty()) continue;
    std::remove(file.temporaryPath.c_str());
    forgetTemporary(file.temporaryPath);
  }
}

std::string PendingFiles::add(const std::string& finalPath) {
  std::error_code ignored;
  if (!overwrite_ && fs::exists(fs::symlink_status(finalPath, ignored)))
    throw RecordingError(existsAlready(finalPath));
  const fs::file_status status = fs::status(finalPath, ignored);
  if (fs::is_directory(status) || fs::is_other(status)) {
    errno = fs::is_directory(status) ? EISDIR : EINVAL;
    throw RecordingError(writeFailure(finalPath));
  }
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    std::string temporaryPath = temporaryPathFor(finalPath);
    noteTemporary(temporaryPath);
    if (reserve(temporaryPath)) {
      files_.push_back({finalPath, temporaryPath});
      return temporaryPath;
    }
    forgetTemporary(temporaryPath);
    if (errno != EEXIST) break;
  }
  throw RecordingError(writeFailure(finalPath));
}

void PendingFiles::addLeftover(const std::string& path) {
  std::error_code ignored;
  if (!fs::exists(fs::symlink_status(path, ignored))) return;
  if (!overwrite_) throw RecordingError(existsAlready(path));
  leftovers_.push_back(path);
}

void PendingFiles::commit() {
  if (files_.empty()) return;
  if (overwrite_) {
    std::remove(files_.back().finalPath.c_str());
    for (const std::string& path : leftovers_) std::remove(path.c_str());
  }
  for (size_t i = 0; i < files_.size(); ++i) {
    File& file = files_[i];
    const bool renamed = overwrite_ ? std::rename(file.temporaryPath.c_str(), file.finalPath.c_str()) == 0
                                    : renameToFreeName(file.temporaryPath, file.finalPath);
    if (!renamed) {
      const std::string problem =
          errno == EEXIST ? existsAlready(file.finalPath) : writeFailure(file.finalPath);
      for (size_t k = 0; k < i; ++k) std::remove(files_[k].finalPath.c_str());
      throw RecordingError(problem);
    }
    forgetTemporary(file.temporaryPath);
    file.temporaryPath.clear();
  }
  files_.clear();
}

std::vector<std::string> PendingFiles::finalPaths() const {
  std::vector<std::string> paths;
  for (const File& file : files_) paths.push_back(file.finalPath);
  return paths;
}

} // namespace emeg
