#include "plugin/converter/run/MachineResources.h"

#include <sys/statvfs.h>

namespace emeg {

namespace {

uint64_t freeDiskSpace(const std::string& path) {
  const size_t separator = path.find_last_of('/');
  const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
  struct statvfs figures {};
  if (statvfs(folder.c_str(), &figures) != 0) return unknownAmount;
  return static_cast<uint64_t>(figures.f_bavail) * figures.f_frsize;
}

} // namespace

MachineResources availableResources(const std::string& path) {
  return {freeMemory(), freeDiskSpace(path)};
}

} // namespace emeg
