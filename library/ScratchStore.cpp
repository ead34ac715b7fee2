#include "library/ScratchStore.h"

#include "engine/store/FileStore.h"
#include "engine/store/MemoryStore.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>

namespace emeg {

namespace {

/// FileStore would empty a file that somebody else needs.
void createNew(const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "wbx");
  const int error = errno;
  if (file == nullptr)
    throw StoreError("The scratch file \"" + path + "\" cannot be created: " + std::strerror(error) + ".",
                     true, error);
  std::fclose(file);
}

} // namespace

std::unique_ptr<ChannelStore> makeScratchStore(const std::string& path, int nrOfChannels,
                                               int64_t nrOfSamples) {
  constexpr int64_t mostBytes = std::numeric_limits<int64_t>::max();
  if (nrOfSamples > mostBytes / static_cast<int64_t>(sizeof(float)) / std::max(nrOfChannels, 1))
    throw std::bad_alloc();
  if (path.empty()) return std::make_unique<MemoryStore>(nrOfChannels, nrOfSamples);
  createNew(path);
  std::unique_ptr<ChannelStore> store;
  try {
    store = std::make_unique<FileStore>(path, nrOfSamples);
  } catch (...) {
    std::remove(path.c_str());
    throw;
  }
  std::remove(path.c_str());
  return store;
}

} // namespace emeg
