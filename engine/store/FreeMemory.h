#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace emeg {

/// Stands for "cannot be found out": never too little.
constexpr uint64_t unknownAmount = std::numeric_limits<uint64_t>::max();

/// Bytes that this process can still have: the machine's free memory, within the process's own limit.
uint64_t freeMemory();

/// Bytes that the control groups which this process belongs to (Linux, versions 1 and 2: containers, batch
/// systems) still allow it. Cached file pages that the system can take back count as free. unknownAmount
/// without such limits, and on other systems.
uint64_t freeMemoryInGroups();

/// The same with the file that names the groups ("/proc/self/cgroup") and the folder where their figures lie
/// ("/sys/fs/cgroup"): for tests.
uint64_t freeMemoryInGroups(const std::string& groupsFile, const std::string& figuresFolder);

} // namespace emeg
