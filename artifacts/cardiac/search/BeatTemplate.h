#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// For one channel: what the beats that resemble each other best have in common.
///
/// Resemblance of a beat: minus the sum, over all other beats, of the weighted product of the two normalised
/// segments (2 x period + 1 samples around each beat). Beats below the approximate median of the resemblances
/// are added up, normalised. A single beat leaves an empty template.
///
/// The sum over pairs is taken from one sum over all beats. Where that could decide otherwise than the pairs
/// one after another would (values that agree to rounding), the pairs decide.
std::vector<double> makeBeatTemplate(const double* channel, int64_t length, const std::vector<int32_t>& beats,
                                     int32_t period, const std::vector<double>& weights);

/// The selection by itself: true for every beat that goes into the template.
std::vector<bool> selectBeats(const double* channel, int64_t length, const std::vector<int32_t>& beats,
                              int32_t period, const std::vector<double>& weights);

} // namespace emeg
