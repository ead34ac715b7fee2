#pragma once

#include "engine/CorrectedSink.h"
#include "engine/store/ChannelStore.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Smallest and largest value of every channel of what passes, block after block.
class ChannelBounds {
public:
  explicit ChannelBounds(size_t nrOfChannels) : bounds_(nrOfChannels) {}
  /// `count` time points, channel after channel.
  template <typename Sample>
  void add(size_t count, std::span<const Sample> values) {
    for (size_t c = 0; c < bounds_.size() && count > 0; ++c) {
      const auto samples = values.subspan(c * count, count);
      const auto [low, high] = std::minmax_element(samples.begin(), samples.end());
      const ValueBounds block{static_cast<double>(*low), static_cast<double>(*high)};
      bounds_[c] = isFirst_ ? block
                            : ValueBounds{std::min(bounds_[c].smallest, block.smallest),
                                          std::max(bounds_[c].largest, block.largest)};
    }
    if (count > 0) isFirst_ = false;
  }
  const std::vector<ValueBounds>& all() const { return bounds_; }

private:
  std::vector<ValueBounds> bounds_;
  bool isFirst_ = true;
};

/// Keeps the bounds of what a correction sends.
class BoundsSink : public CorrectedSink {
public:
  explicit BoundsSink(size_t nrOfChannels) : bounds_(nrOfChannels) {}
  void take(int64_t count, std::span<const double> values) override {
    bounds_.add(static_cast<size_t>(count), values);
  }
  const std::vector<ValueBounds>& bounds() const { return bounds_.all(); }

private:
  ChannelBounds bounds_;
};

/// Sends what the store holds from its first sample on, every channel times its factor.
void sendStored(ChannelStore& store, int64_t nrOfSamples, std::span<const double> factors,
                CorrectedSink& sink);

/// Sends a block of 32-bit floats, channel after channel, in parts, so that the doubles take little memory.
void sendBlock(std::span<const float> block, size_t nrOfChannels, CorrectedSink& sink);

} // namespace emeg
