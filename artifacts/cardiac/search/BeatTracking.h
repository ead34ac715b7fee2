#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"
#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Tracking ends with this many beats.
constexpr size_t maxNrOfTrackedBeats = 10000;

/// Follows the heart beats through the recording, from three periods behind its start: every channel looks
/// for the next beat where the signal resembles its running template (the sum of the normalised segments of
/// all beats so far), the median over channels decides. After every beat all beats so far are shifted so that
/// the instants at which the signal consistently rises or falls lie in the middle of their segments.
///
/// Returns the beat positions, at least one; nothing when the period is 0. The cost of a beat grows with the
/// square of the period.
std::vector<int32_t> trackBeats(const BcgSeries& series, const HeartPeriod& heart);

} // namespace emeg
