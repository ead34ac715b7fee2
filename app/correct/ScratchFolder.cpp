#include "app/correct/ScratchFolder.h"

#include "app/correct/CorrectParameters.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace emeg {

namespace {

namespace fs = std::filesystem;

constexpr const char* folderStart = ".emeg-scratch-";
constexpr const char* lockName = "in-use";

std::string lockOf(const std::string& folder) {
  return folder + "/" + lockName;
}

std::string readableBytes(uint64_t bytes) {
  constexpr double megabyte = 1e6;
  return fmt::format("{:.0f} MB", static_cast<double>(bytes) / megabyte + 0.5);
}

} // namespace

ScratchFolder::ScratchFolder(const std::string& parent) {
  std::string name = parent + "/" + folderStart + "XXXXXX";
  if (mkdtemp(name.data()) == nullptr)
    throw FailedRun(fmt::format("no temporary folder can be made in \"{}\": {}. Choose another one with "
                                "--scratch FOLDER.",
                                parent, std::strerror(errno)));
  path_ = name;
  lock_ = open(lockOf(path_).c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  if (lock_ >= 0) flock(lock_, LOCK_EX | LOCK_NB);
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  if (lock_ >= 0) close(lock_);
}

std::vector<std::string> staleScratchFolders(const std::string& parent) {
  std::vector<std::string> stale;
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().filename().string().rfind(folderStart, 0) != 0) continue;
    const int lock = open(lockOf(entry->path().string()).c_str(), O_RDWR | O_CLOEXEC);
    if (lock < 0) continue; // just being made, or another user's
    if (flock(lock, LOCK_EX | LOCK_NB) == 0) stale.push_back(entry->path().string());
    close(lock);
  }
  return stale;
}

void checkRoom(const std::vector<NeededRoom>& needs) {
  struct Disk {
    uint64_t needed = 0, available = 0;
    std::string folder;
  };
  std::map<dev_t, Disk> disks;
  for (const NeededRoom& need : needs) {
    struct stat status {};
    struct statvfs room {};
    if (stat(need.folder.c_str(), &status) != 0 || statvfs(need.folder.c_str(), &room) != 0) continue;
    Disk& disk = disks[status.st_dev];
    if (disk.folder.empty()) disk.folder = need.folder;
    disk.needed += need.bytes;
    disk.available = uint64_t{room.f_bavail} * uint64_t{room.f_frsize};
  }
  for (const auto& [device, disk] : disks) {
    if (disk.needed > disk.available)
      throw FailedRun(
          fmt::format("this run needs {} ({} bytes) of disk space in \"{}\" and there are {}. Make "
                      "room there, or choose a folder on another disk with --scratch FOLDER.",
                      readableBytes(disk.needed), disk.needed, disk.folder, readableBytes(disk.available)));
  }
}

} // namespace emeg
