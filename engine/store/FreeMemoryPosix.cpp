#include "engine/store/FreeMemory.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>

#include <sys/resource.h>

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

/// Nothing where the file is not there or says "max".
std::optional<uint64_t> numberInFile(const std::string& path) {
  std::ifstream stream(path);
  uint64_t number = 0;
  if (!(stream >> number)) return std::nullopt;
  return number;
}

uint64_t figureInFile(const std::string& path, const std::string& label) {
  std::ifstream stream(path);
  std::string word;
  uint64_t number = 0;
  while (stream >> word >> number)
    if (word == label) return number;
  return 0;
}

/// How one version of control groups names its files.
struct GroupFiles {
  const char* limit;
  const char* usage;
  const char* reclaimable; ///< in memory.stat
};
constexpr GroupFiles version1{"memory.limit_in_bytes", "memory.usage_in_bytes", "total_inactive_file"};
constexpr GroupFiles version2{"memory.max", "memory.current", "inactive_file"};

uint64_t freeInGroup(const std::string& folder, const GroupFiles& files) {
  const auto limit = numberInFile(folder + "/" + files.limit);
  const auto usage = numberInFile(folder + "/" + files.usage);
  if (!limit || !usage) return unknownAmount;
  const uint64_t reclaimable = std::min(figureInFile(folder + "/memory.stat", files.reclaimable), *usage);
  const uint64_t used = *usage - reclaimable;
  return used < *limit ? *limit - used : 0;
}

/// The least of a group and all those above it. A container sees its own groups at the top of the folder,
/// whatever its name outside is.
uint64_t freeUpTo(const std::string& top, std::string group, const GroupFiles& files) {
  uint64_t least = freeInGroup(top, files);
  while (!group.empty() && group != "/") {
    least = std::min(least, freeInGroup(top + group, files));
    group.erase(group.find_last_of('/'));
  }
  return least;
}

bool namesMemory(const std::string& controllers) {
  std::istringstream list(controllers);
  std::string controller;
  while (std::getline(list, controller, ','))
    if (controller == "memory") return true;
  return false;
}

} // namespace

uint64_t freeMemory() {
  uint64_t memory = procFigure("/proc/meminfo", "MemAvailable:");
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    const uint64_t used = procFigure("/proc/self/status", "VmSize:");
    const uint64_t allowed = limit.rlim_cur;
    memory = std::min(memory, used < allowed ? allowed - used : 0);
  }
  return memory;
}

/// Lines are "number:controllers:group"; version 2 has one without controllers.
uint64_t freeMemoryInGroups(const std::string& groupsFile, const std::string& figuresFolder) {
  uint64_t least = unknownAmount;
  std::ifstream stream(groupsFile);
  std::string line;
  while (std::getline(stream, line)) {
    const size_t first = line.find(':');
    const size_t second = first == std::string::npos ? first : line.find(':', first + 1);
    if (second == std::string::npos || second + 1 >= line.size() || line[second + 1] != '/') continue;
    const std::string controllers = line.substr(first + 1, second - first - 1);
    const std::string group = line.substr(second + 1);
    if (controllers.empty()) least = std::min(least, freeUpTo(figuresFolder, group, version2));
    if (namesMemory(controllers))
      least = std::min(least, freeUpTo(figuresFolder + "/memory", group, version1));
  }
  return least;
}

uint64_t freeMemoryInGroups() {
  return freeMemoryInGroups("/proc/self/cgroup", "/sys/fs/cgroup");
}

} // namespace emeg
