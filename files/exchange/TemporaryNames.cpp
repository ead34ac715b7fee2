#include "files/exchange/TemporaryNames.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace emeg {

namespace {

constexpr size_t mostNames = 64;
constexpr size_t longestName = 4096;

/// A signal may come at any moment and its handler must not ask for memory: the names stand in fixed places.
struct Slot {
  std::atomic<bool> used = false;
  std::array<char, longestName> name{};
};
std::array<Slot, mostNames> slots;

void removeAndEnd(int signal) {
  for (const Slot& slot : slots)
    if (slot.used) unlink(slot.name.data());
  std::signal(signal, SIG_DFL);
  raise(signal);
}

} // namespace

void noteTemporary(const std::string& path) {
  const auto free = std::find_if(slots.begin(), slots.end(), [](const Slot& slot) { return !slot.used; });
  if (free == slots.end() || path.size() >= longestName) return;
  std::memcpy(free->name.data(), path.c_str(), path.size() + 1);
  free->used = true;
}

void forgetTemporary(const std::string& path) {
  for (Slot& slot : slots)
    if (slot.used && std::string_view(slot.name.data()) == path) slot.used = false;
}

void removeTemporariesWhenInterrupted() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    // Who started the program with nohup wants it to go on.
    if (std::signal(number, removeAndEnd) == SIG_IGN) std::signal(number, SIG_IGN);
  }
}

} // namespace emeg
