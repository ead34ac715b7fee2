#pragma once

#include "engine/store/ChannelStore.h"

#include <cstdint>
#include <map>
#include <vector>

namespace emeg {

/// Whole channels of a store, which a search reads more than once: the first few stay in memory.
class CachedChannels {
public:
  /// `offset`: the store's sample at which the recording begins.
  CachedChannels(ChannelStore& store, int64_t offset, int64_t nrOfSamples);

  /// Fills `samples` with a channel. Throws StoreError.
  void read(int channel, std::vector<double>& samples);

  /// Bytes that may be held per sample of a recording.
  static constexpr uint64_t bytesPerSample = 11 * sizeof(float);

private:
  ChannelStore& store_;
  int64_t offset_;
  int64_t nrOfSamples_;
  std::map<int, std::vector<float>> held_;
  std::vector<float> buffer_;
};

} // namespace emeg
