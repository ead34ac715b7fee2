#pragma once

#include "files/exchange/RecordingReader.h"

#include <array>
#include <functional>
#include <vector>

namespace emeg {

/// A frequency band of the EEG.
struct Band {
  const char* name;
  double lowest, highest; ///< Hz
};

constexpr std::array<Band, 5> eegBands = {
    {{"delta", 1, 4}, {"theta", 4, 8}, {"alpha", 8, 13}, {"beta", 13, 30}, {"gamma", 30, 100}}};

/// Power in every band, square microvolts; 0 for a band that does not lie below the highest frequency.
using BandPowers = std::array<double, eegBands.size()>;

/// Band powers of all channels in a stretch (seconds), up to `highest` Hz, by Welch's method with Hann
/// windows of about four seconds (Welch: The use of fast Fourier transform for the estimation of power
/// spectra, IEEE Trans. Audio Electroacoust. 15 (1967)), at most 100 windows spread over the stretch. Zeros
/// for a stretch that holds no window.
std::vector<BandPowers> measureBandPowers(RecordingReader& recording, double from, double to, double highest,
                                          const std::function<void(double)>& progress);

} // namespace emeg
