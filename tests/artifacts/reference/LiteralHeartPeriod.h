#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the heart period estimation, sum by sum, to compare the real one with.
/// A recording is given channel by channel; every channel holds `length` samples at `rate` Hz.

/// The heart period that all channels share, with the beat-to-beat intervals that are accepted around it.
struct LiteralPeriod {
  std::vector<double> channelPeriods; ///< in samples, ascending, no longer in the order of the channels
  int32_t period = 0;                 ///< samples; 0 when no channel has one
  int32_t shortest = 0;               ///< samples
  int32_t longest = 0;                ///< samples
  double beatsPerMinute = 0;          ///< 0 when the period is 0
};

/// Sample i of a channel; 0.0 outside.
inline double literalSample(const std::vector<double>& channel, int32_t length, int32_t i) {
  return i >= 0 && i < length ? channel[static_cast<std::size_t>(i)] : 0.0;
}

/// The period of one channel by autocorrelation; `previous` when no correlation is a number above -1e60.
int32_t literalChannelPeriod(const std::vector<double>& channel, int32_t length, float rate,
                             int32_t previous);

LiteralPeriod literalHeartPeriod(const std::vector<std::vector<double>>& series, int32_t length, float rate);

} // namespace emeg
