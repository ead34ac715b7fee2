#include "converter/steps/MachineResources.h"

#include <algorithm>
#include <fstream>

#include <sys/resource.h>
#include <sys/statvfs.h>

namespace emeg {

namespace {

/// A figure of a /proc file in kilobytes, in bytes.
uint64_t procFigure(const char* file, const std::string& label) {
  std::ifstream stream(file);
  std::string word;
  uint64_t kilobytes = 0;
  while (stream >> word)
    if (word == label && stream >> kilobytes) return kilobytes * 1024;
  return unknownAmount;
}

uint64_t memoryWithinLimits() {
  uint64_t memory = procFigure("/proc/meminfo", "MemAvailable:");
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    const uint64_t used = procFigure("/proc/self/status", "VmSize:");
    const uint64_t allowed = limit.rlim_cur;
    memory = std::min(memory, used < allowed ? allowed - used : 0);
  }
  return memory;
}

uint64_t freeDiskSpace(const std::string& path) {
  const size_t separator = path.find_last_of('/');
  const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
  struct statvfs figures {};
  if (statvfs(folder.c_str(), &figures) != 0) return unknownAmount;
  return static_cast<uint64_t>(figures.f_bavail) * figures.f_frsize;
}

} // namespace

MachineResources availableResources(const std::string& path) {
  return {memoryWithinLimits(), freeDiskSpace(path)};
}

} // namespace emeg
