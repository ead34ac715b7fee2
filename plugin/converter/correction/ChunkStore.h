#pragma once

#include "engine/store/ChannelStore.h"
#include "files/formats/ChunkFiles.h"

#include <cerrno>

namespace emeg {

/// The chunk files of a run as the engine sees them. Channels are read and written from their first sample
/// on.
class ChunkStore : public ChannelStore {
public:
  explicit ChunkStore(ChunkFiles& files) : files_(files) {}

  void read(int channel, int64_t first, std::span<float> samples) override {
    if (first != 0 || !files_.readChannel(channel, static_cast<int64_t>(samples.size()), samples.data()))
      throw StoreError("Error reading file: ", false, errno);
  }

  void write(int channel, int64_t first, std::span<const float> samples) override {
    if (first != 0 || !files_.writeChannel(channel, static_cast<int64_t>(samples.size()), samples.data()))
      throw StoreError("Error writing file: ", true, errno);
  }

private:
  ChunkFiles& files_;
};

} // namespace emeg
