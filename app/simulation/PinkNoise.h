#pragma once

#include "app/simulation/RandomGenerator.h"

#include <array>

namespace emeg {

/// Noise whose power falls with 1/f between 0.2 and about 50 Hz and faster above: white noise through five
/// first-order low-passes side by side, their corners two octaves apart and their gains falling with the root
/// of the corner.
class PinkNoise {
public:
  /// Unit expected RMS at `samplingFrequency` (Hz). The filters have settled when the first value is drawn.
  PinkNoise(RandomGenerator random, double samplingFrequency);

  double next();

private:
  static constexpr int nrOfCorners = 5;
  RandomGenerator random_;
  std::array<double, nrOfCorners> pole_{};
  std::array<double, nrOfCorners> gain_{};
  std::array<double, nrOfCorners> state_{};
};

} // namespace emeg
