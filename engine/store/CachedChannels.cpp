#include "engine/store/CachedChannels.h"

#include <algorithm>

namespace emeg {

namespace {

constexpr uint64_t mostChannels = 10;
constexpr uint64_t mostBytes = uint64_t{256} << 20;

uint64_t bytesOfChannel(int64_t nrOfSamples) {
  return std::max<uint64_t>(static_cast<uint64_t>(nrOfSamples) * sizeof(float), 1);
}

uint64_t channelsHeld(int64_t nrOfSamples) {
  return std::min(mostChannels, mostBytes / bytesOfChannel(nrOfSamples));
}

} // namespace

CachedChannels::CachedChannels(ChannelStore& store, int64_t offset, int64_t nrOfSamples)
    : store_(store), offset_(offset), nrOfSamples_(nrOfSamples) {}

uint64_t CachedChannels::memoryFor(int64_t nrOfSamples) {
  return (channelsHeld(nrOfSamples) + 1) * bytesOfChannel(nrOfSamples); // and the buffer
}

void CachedChannels::read(int channel, std::vector<double>& samples) {
  const auto known = held_.find(channel);
  if (known != held_.end()) {
    samples.assign(known->second.begin(), known->second.end());
    return;
  }
  buffer_.resize(static_cast<size_t>(nrOfSamples_));
  store_.read(channel, offset_, buffer_);
  samples.assign(buffer_.begin(), buffer_.end());
  if (held_.size() < channelsHeld(nrOfSamples_)) held_.emplace(channel, buffer_);
}

} // namespace emeg
