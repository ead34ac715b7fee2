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

/// Sends what the store holds from its first sample on, every channel times its factor.
void sendStored(ChannelStore& store, int64_t nrOfSamples, std::span<const double> factors,
                CorrectedSink& sink);

} // namespace emeg
