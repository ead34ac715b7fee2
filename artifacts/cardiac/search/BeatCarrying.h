#pragma once

#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Beats that the search did not reach.
struct CarriedBeats {
  std::vector<double> inFront; ///< of the first beat, ascending, in samples of the series
  std::vector<double> behind;  ///< the last beat, ascending
};

/// Looks for the beats in front of the first and behind the last one that was found (`positions`, ascending),
/// one after another as far as the recording goes. The median of the nearest intervals says where the next
/// beat may be; it is there where the series resembles the mean beat of every channel most. That has to be
/// clearly more than the likeness between beats, where there is none; otherwise the search ends. Nothing
/// where fewer than eight beats were found, or where beats do not stand out.
CarriedBeats carryBeatsToEdges(const BcgSeries& series, const std::vector<double>& positions);

} // namespace emeg
