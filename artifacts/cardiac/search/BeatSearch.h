#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"
#include "artifacts/cardiac/series/BcgSeries.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace emeg {

/// How heart beats are searched for. The defaults are the plug-in's.
struct BeatSearchSettings {
  /// No more beats than this.
  size_t capacity = 3000;
  /// Minima of the detection signal that are looked at, a second of the recording on average; none: all. They
  /// cannot be closer than every second sample.
  std::optional<float> candidatesPerSecond = 35.0f;
  /// Follow the beats to the recording's edges, see carryBeatsToEdges.
  bool carryToEdges = false;
};

/// The search without limits, from edge to edge. What bounds it: positions are 32-bit (2^31 samples, 99 days
/// at 250 Hz); the templates are made from the first ten thousand beats that are tracked; the beats of a
/// recording that falls apart into more than ten thousand chains end with the last of these; and memory, one
/// 32-bit float per sample and channel beside the series.
inline BeatSearchSettings unlimitedBeatSearch() {
  return {std::numeric_limits<size_t>::max(), std::nullopt, true};
}

/// The heart beats of a recording, and what they were found from.
struct FoundBeats {
  HeartPeriod period;
  std::vector<double> positions;      ///< ascending, in samples of the series
  std::vector<float> detectionSignal; ///< its minima are the beats; empty when there is no period
  bool listIsFull = false;            ///< there are more than `capacity`
  bool candidatesAreFull = false;     ///< there are more minima than were looked at
  int64_t nrOfCarriedInFront = 0;     ///< of the positions, those that were added in front of the first one
  int64_t nrOfCarriedBehind = 0;      ///< ... and behind the last
};

/// Period, detection signal and selection in one. Finding no beats is a result too.
FoundBeats findBeats(const BcgSeries& series, const BeatSearchSettings& settings = {});

} // namespace emeg
