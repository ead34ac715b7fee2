#pragma once

#include "app/simulation/RandomGenerator.h"

namespace emeg {

/// One source of the alpha rhythm: an oscillation near 10 Hz whose frequency wanders by some tenths of a
/// hertz and whose amplitude waxes and wanes between 0 and 1 over several seconds.
class AlphaRhythm {
public:
  AlphaRhythm(RandomGenerator random, double samplingFrequency);

  double next();

private:
  RandomGenerator random_;
  double samplingInterval_;
  double phase_;
  double envelopePhase_;
  double frequencyOffset_; ///< Hz, a slow first-order process
  double frequencyPole_;
  double frequencyKick_;
  double envelopeKick_;
};

} // namespace emeg
