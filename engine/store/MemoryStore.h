#pragma once

#include "engine/store/ChannelStore.h"

#include <vector>

namespace emeg {

/// A store in memory: nrOfChannels x nrOfSamples floats, zeros at first. Stretches outside it throw
/// std::out_of_range.
class MemoryStore : public ChannelStore {
public:
  MemoryStore(int nrOfChannels, int64_t nrOfSamples);

  void read(int channel, int64_t first, std::span<float> samples) override;
  void write(int channel, int64_t first, std::span<const float> samples) override;

private:
  float* at(int channel, int64_t first, size_t count);

  int nrOfChannels_;
  int64_t nrOfSamples_;
  std::vector<float> samples_;
};

} // namespace emeg
