#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// A private folder for a run's temporary files, removed with everything in it by the destructor. A lock that
/// ends with the process tells a folder in use from one that a killed run left behind.
class ScratchFolder {
public:
  /// Makes the folder in `parent` (an existing folder). Throws FailedRun.
  explicit ScratchFolder(const std::string& parent);
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
  std::string path_;
  int lock_ = -1;
};

/// Scratch folders in `parent` that no living run uses.
std::vector<std::string> staleScratchFolders(const std::string& parent);

/// Bytes that a run needs in a folder for some purpose.
struct NeededRoom {
  std::string folder;
  uint64_t bytes = 0;
};

/// Throws FailedRun when a disk has less room than the needs on it together, with both figures and the
/// remedy. A disk whose room cannot be found out is taken as large enough.
void checkRoom(const std::vector<NeededRoom>& needs);

} // namespace emeg
