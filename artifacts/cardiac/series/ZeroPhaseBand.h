#pragma once

#include <span>
#include <vector>

namespace emeg {

/// The samples between two frequencies (Hz), without delay: a windowed sinc (Hamming's window) of 0.6 s. As
/// many samples as there were; 0 is assumed outside.
std::vector<double> bandOf(std::span<const double> samples, double rate, double lowHz, double highHz);

/// out[i] = the mean of the samples in the window of that many seconds around i.
std::vector<double> centredMean(std::span<const double> samples, double rate, double seconds);

} // namespace emeg
