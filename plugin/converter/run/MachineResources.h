#pragma once

#include "engine/store/FreeMemory.h"

#include <cstdint>
#include <string>

namespace emeg {

/// Bytes of memory and of disk space beside the input.
struct MachineResources {
  uint64_t memory = 0;
  uint64_t disk = 0;
};

/// What this process can still have: free memory within its limits, and free space in the folder of `path`.
MachineResources availableResources(const std::string& path);

/// Empty when the run fits; otherwise a sentence per shortage with both figures and what to do.
std::string describeShortage(const MachineResources& needed, const MachineResources& available,
                             const std::string& path);

} // namespace emeg
