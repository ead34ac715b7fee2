#pragma once

#include <string>
#include <vector>

namespace emeg {

/// The files of one recording while they are being written: each has a hidden temporary name of its own in
/// the folder of its final name until commit(). Whatever was not committed is removed by the destructor.
/// Throws RecordingError.
class PendingFiles {
public:
  explicit PendingFiles(bool overwrite) : overwrite_(overwrite) {}
  ~PendingFiles();
  PendingFiles(const PendingFiles&) = delete;
  PendingFiles& operator=(const PendingFiles&) = delete;

  /// Reserves a temporary file for `finalPath` and returns its path. An existing file of the final name, a
  /// folder or a device is refused (a file only when it must not be replaced).
  std::string add(const std::string& finalPath);

  /// An older file that would be taken for a part of the new recording: commit() removes it when files may be
  /// replaced, else it is refused now.
  void addLeftover(const std::string& path);

  /// Renames the files in the order in which they were added: the one that makes the set complete is added
  /// last. When replacing, the older one of that name goes first, so that no mixture ever looks complete.
  /// When a rename fails the files renamed before it are removed.
  void commit();

  std::vector<std::string> finalPaths() const;

private:
  struct File {
    std::string finalPath;
    std::string temporaryPath;
  };
  void removeTemporaries();

  bool overwrite_;
  std::vector<File> files_;
  std::vector<std::string> leftovers_;
};

/// RecordingError's usual sentence for a failed write: `path`, the reason of the C library's error number,
/// and what to do.
std::string writeFailure(const std::string& path);

} // namespace emeg
