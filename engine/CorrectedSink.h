#pragma once

#include <cstdint>
#include <span>

namespace emeg {

/// Takes the corrected recording, block after block.
class CorrectedSink {
public:
  virtual ~CorrectedSink() = default;
  CorrectedSink() = default;
  CorrectedSink(const CorrectedSink&) = delete;
  CorrectedSink& operator=(const CorrectedSink&) = delete;

  /// The next `count` time points, channel after channel: values[c x count + t]. May throw.
  virtual void take(int64_t count, std::span<const double> values) = 0;
};

/// The smallest and largest value of a channel.
struct ValueBounds {
  double smallest = 0;
  double largest = 0;
};

} // namespace emeg
