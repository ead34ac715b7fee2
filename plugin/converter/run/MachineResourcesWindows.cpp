#include "plugin/converter/messages/PathBuffer.h"
#include "plugin/converter/run/MachineResources.h"

#include <windows.h>

namespace emeg {

namespace {

uint64_t freeDiskSpace(const std::string& path) {
  const std::string folder = folderPartOf(path);
  ULARGE_INTEGER available{};
  // The folder of a path without one is the current folder, which a null pointer stands for.
  if (GetDiskFreeSpaceExA(folder.empty() ? nullptr : folder.c_str(), &available, nullptr, nullptr) == 0)
    return unknownAmount;
  return available.QuadPart;
}

} // namespace

MachineResources availableResources(const std::string& path) {
  return {freeMemory(), freeDiskSpace(path)};
}

} // namespace emeg
