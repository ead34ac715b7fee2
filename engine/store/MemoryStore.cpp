#include "engine/store/MemoryStore.h"

#include <algorithm>

namespace emeg {

MemoryStore::MemoryStore(int nrOfChannels, int64_t nrOfSamples)
    : nrOfChannels_(nrOfChannels), nrOfSamples_(nrOfSamples),
      samples_(static_cast<size_t>(nrOfChannels) * static_cast<size_t>(nrOfSamples)) {}

float* MemoryStore::at(int channel, int64_t first, size_t count) {
  const bool isInside = channel >= 0 && channel < nrOfChannels_ && first >= 0 && first <= nrOfSamples_ &&
                        count <= static_cast<size_t>(nrOfSamples_ - first);
  if (!isInside) throw std::out_of_range("a stretch outside the channel store");
  return samples_.data() + static_cast<size_t>(channel) * static_cast<size_t>(nrOfSamples_) +
         static_cast<size_t>(first);
}

void MemoryStore::read(int channel, int64_t first, std::span<float> samples) {
  std::copy_n(at(channel, first, samples.size()), samples.size(), samples.begin());
}

void MemoryStore::write(int channel, int64_t first, std::span<const float> samples) {
  std::copy(samples.begin(), samples.end(), at(channel, first, samples.size()));
}

} // namespace emeg
