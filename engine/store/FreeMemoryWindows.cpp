#include "engine/store/FreeMemory.h"

#include <algorithm>
#include <windows.h>

namespace emeg {

/// What can still be promised to this process, paging file included.
uint64_t freeMemory() {
  MEMORYSTATUSEX status{};
  status.dwLength = sizeof status;
  if (GlobalMemoryStatusEx(&status) == 0) return unknownAmount;
  return std::min<uint64_t>(status.ullAvailPageFile, status.ullAvailVirtual);
}

uint64_t freeMemoryInGroups(const std::string&, const std::string&) {
  return unknownAmount;
}

uint64_t freeMemoryInGroups() {
  return unknownAmount;
}

} // namespace emeg
