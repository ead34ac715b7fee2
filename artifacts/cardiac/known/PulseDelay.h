#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Longest time from an R peak to the middle of the artifact, seconds.
constexpr double longestPulseDelay = 0.5;

/// Samples from the beats (positions in samples, ascending: R peaks) to the middle of every channel's
/// artifact, which comes later because blood has to flow first (Allen, Polizzi, Krakow, Fish, Lemieux,
/// NeuroImage 8 (1998): about 0.2 s): between 0 and longestPulseDelay, the delay at which the average over
/// beats has the most energy, weighted as the search for beats weights it. Beats with movements count no more
/// than others. A channel whose average does not stand out of its noise takes the median delay of those that
/// do.
std::vector<int32_t> fitPulseDelays(const BcgSeries& series, const std::vector<double>& beats,
                                    int32_t heartPeriod);

/// The beats moved by a delay, without those that end up behind the series.
std::vector<double> delayedPulses(const std::vector<double>& beats, int32_t delay, int64_t length);

} // namespace emeg
