#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// What the beats at hand look like in every channel, and how much a place resembles them.
class MeanBeats {
public:
  /// `positions` are beats in samples of the series. Every beat counts the same, however large a movement in
  /// it is; those that resemble the others least count nothing. The beats' middle counts more than their
  /// ends, as in the search.
  MeanBeats(const BcgSeries& series, const std::vector<double>& positions, int32_t period);

  /// The median over channels of the weighted correlation with the mean beat, -1 to 1. Near an edge of the
  /// recording with what there is of the beat. 0 without a channel of energy.
  double likenessAt(int64_t sample) const;

private:
  struct Channel {
    const double* samples = nullptr;
    std::vector<double> mean;
  };
  double channelLikeness(const Channel& channel, int64_t sample) const;

  int64_t length_;
  int64_t half_;
  std::vector<double> weights_;
  std::vector<Channel> channels_;
};

} // namespace emeg
