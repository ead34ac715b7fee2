#pragma once

#include "engine/CorrectedSink.h"
#include "engine/store/ChannelStore.h"

#include <vector>

namespace emeg {

/// Keeps the bounds of what passes.
class BoundsSink : public CorrectedSink {
public:
  explicit BoundsSink(size_t nrOfChannels) : bounds_(nrOfChannels) {}
  void take(int64_t count, std::span<const double> values) override;
  const std::vector<ValueBounds>& bounds() const { return bounds_; }

private:
  std::vector<ValueBounds> bounds_;
  bool isFirst_ = true;
};

/// Puts the corrected recording where the recording was, from the store's first sample on. A block is written
/// when the next one is complete: until then the stages may still need what it replaces.
class InPlaceSink : public CorrectedSink {
public:
  InPlaceSink(ChannelStore& store, size_t nrOfChannels) : store_(store), nrOfChannels_(nrOfChannels) {}
  void take(int64_t count, std::span<const double> values) override;
  /// Writes the last block.
  void finish() { flush(); }

private:
  void flush();

  ChannelStore& store_;
  size_t nrOfChannels_;
  std::vector<float> pending_;
  size_t pendingLength_ = 0;
  int64_t written_ = 0;
};

/// Sends what the store holds from its first sample on, every channel times its factor.
void sendStored(ChannelStore& store, int64_t nrOfSamples, std::span<const double> factors,
                CorrectedSink& sink);

} // namespace emeg
