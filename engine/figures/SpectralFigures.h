#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "engine/figures/WelchSpectrum.h"

#include <array>

namespace emeg {

/// A frequency band of the EEG.
struct Band {
  const char* name;
  double lowest, highest; ///< Hz
};

constexpr std::array<Band, 5> eegBands = {
    {{"delta", 1, 4}, {"theta", 4, 8}, {"alpha", 8, 13}, {"beta", 13, 30}, {"gamma", 30, 100}}};

/// Power in every band, square microvolts; 0 for a band above the spectrum's end.
using BandPowers = std::array<double, eegBands.size()>;
BandPowers bandPowersOf(const PowerSpectrum& spectrum);

/// What stands out at the multiples of the slice frequency, with all that changes slowly from volume to
/// volume: an artifact whose amplitude drifts cancels out in the average over volumes, not here. (Residual
/// power at the slice frequency and its harmonics: Allen, Josephs, Turner, NeuroImage 12 (2000); Niazy et
/// al., NeuroImage 28 (2005).)
struct SlicePeaks {
  double rms = 0; ///< microvolts above what lies beside the peaks
  double toBackground =
      0; ///< power at the peaks over that of as wide stretches beside them; 1: nothing stands out
};
SlicePeaks slicePeaksOf(const PowerSpectrum& spectrum, const MRSequence& sequence, double lowest);

} // namespace emeg
