#pragma once

#include "engine/ChannelRole.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace emeg {

/// How a recorder stored a channel: value = step x integer + offset.
struct IntegerRange {
  double step = 1;
  double offset = 0;
  int64_t smallest = -32768;
  int64_t largest = 32767;
};

/// What a correction must know of a recording before its first sample.
struct RecordingShape {
  double samplingFrequency = 0;                      ///< Hz
  int64_t nrOfSamples = 0;                           ///< per channel
  std::vector<ChannelRole> roles;                    ///< one per channel
  std::vector<std::optional<IntegerRange>> integers; ///< one per channel, or none at all

  int nrOfChannels() const { return static_cast<int>(roles.size()); }
};

} // namespace emeg
