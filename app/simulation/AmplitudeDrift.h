#pragma once

#include "app/simulation/RandomGenerator.h"

#include <array>

namespace emeg {

/// The slow relative change of the gradient artifact's amplitude during a scan (warming coils, a settling
/// head): a few sinusoids with periods of 30 to 120 s.
class AmplitudeDrift {
public:
  /// Over the scan (from `start` for `duration` seconds) the drift has mean 0 and the given RMS.
  AmplitudeDrift(RandomGenerator random, double rms, double start, double duration);

  /// Amplitude factor at `time` (s): 1 plus the drift.
  double factor(double time) const;

private:
  struct Wave {
    double angularFrequency;
    double amplitude;
    double phase;
  };
  double waves(double time) const;

  std::array<Wave, 4> waves_{};
  double scale_ = 0;
  double mean_ = 0;
};

} // namespace emeg
