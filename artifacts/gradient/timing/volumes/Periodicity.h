#pragma once

#include "artifacts/gradient/timing/volumes/BusyStretches.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// A period (samples) and how much the signal resembles itself after it.
struct Period {
  double samples = 0;
  double similarity = 0;
  double slice = 0; ///< samples, of the slices that make it, one after the other; 0: not known
};

/// Periods after which the signal resembles itself as much as it ever does, the likeliest first: the shortest
/// one, which is a volume, or a slice where slices are so much alike that volumes hardly stand out; then
/// longer ones that are more alike; then what these may be made of: a volume of such slices, and equal parts.
/// With `evened` the spectrum is evened out first, so that a readout's tone counts less (and noise more).
/// Only one within `reach` of `expected` where that is not 0. None when the signal does not repeat itself, or
/// is just a tone.
std::vector<Period> findPeriods(std::span<const double> sharpened, double samplingFrequency, bool evened,
                                double expected = 0, double reach = 0);

/// The longest stretch in which the signal resembles what follows one period later; it ends where the last of
/// these repeats ends.
PositionRange longestRepeatingStretch(std::span<const double> sharpened, double period,
                                      double samplingFrequency);

} // namespace emeg
