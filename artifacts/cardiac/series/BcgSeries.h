#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// All channels of a recording, low-passed at 35 Hz and reduced to about 250 samples a second. The arrays
/// belong to somebody else; each holds at least `length` samples, 32-bit floats in doubles: no square
/// overflows. Positions and lengths of every cardiac step are counted in these samples.
struct BcgSeries {
  std::span<const std::vector<double>> channels;
  int64_t length = 0;
  float rate = 0; ///< samples per second

  size_t nrOfChannels() const { return channels.size(); }
};

/// out[i] = samples[first + i], i = 0 ... count - 1; 0 where that lies outside the `length` samples.
void copyWindow(const double* samples, int64_t length, int64_t first, int64_t count, double* out);

/// Whether the sum of a channel's squares is larger than 0. A channel with a sample that is not a number has
/// none.
bool hasEnergy(const double* samples, int64_t length);

} // namespace emeg
