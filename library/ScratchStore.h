#pragma once

#include "engine/store/ChannelStore.h"

#include <cstdint>
#include <memory>
#include <string>

namespace emeg {

/// A store in memory where `path` is empty; else in a file that must not exist and has no name from then on:
/// its room is free again when the store goes, however the process ends. Throws StoreError, std::bad_alloc.
std::unique_ptr<ChannelStore> makeScratchStore(const std::string& path, int nrOfChannels,
                                               int64_t nrOfSamples);

} // namespace emeg
