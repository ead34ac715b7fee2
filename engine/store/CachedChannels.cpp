#include "engine/store/CachedChannels.h"

namespace emeg {

namespace {

constexpr size_t mostHeld = CachedChannels::bytesPerSample / sizeof(float) - 1; // beside the buffer

} // namespace

CachedChannels::CachedChannels(ChannelStore& store, int64_t offset, int64_t nrOfSamples)
    : store_(store), offset_(offset), nrOfSamples_(nrOfSamples) {}

void CachedChannels::read(int channel, std::vector<double>& samples) {
  const auto known = held_.find(channel);
  if (known != held_.end()) {
    samples.assign(known->second.begin(), known->second.end());
    return;
  }
  buffer_.resize(static_cast<size_t>(nrOfSamples_));
  store_.read(channel, offset_, buffer_);
  samples.assign(buffer_.begin(), buffer_.end());
  if (held_.size() < mostHeld) held_.emplace(channel, buffer_);
}

} // namespace emeg
