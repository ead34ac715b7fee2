#pragma once

#include "engine/store/ChannelStore.h"

#include <cstdint>
#include <map>
#include <vector>

namespace emeg {

/// Whole channels of a store, which a search reads more than once: the first ten stay in memory, or as many
/// as 256 MB hold.
class CachedChannels {
public:
  /// `offset`: the store's sample at which the recording begins.
  CachedChannels(ChannelStore& store, int64_t offset, int64_t nrOfSamples);

  /// Fills `samples` with a channel. Throws StoreError.
  void read(int channel, std::vector<double>& samples);

  /// Bytes that are held at most for channels of so many samples.
  static uint64_t memoryFor(int64_t nrOfSamples);

private:
  ChannelStore& store_;
  int64_t offset_;
  int64_t nrOfSamples_;
  std::map<int, std::vector<float>> held_;
  std::vector<float> buffer_;
};

} // namespace emeg
