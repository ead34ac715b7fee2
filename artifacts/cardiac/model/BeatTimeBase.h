#pragma once

#include "artifacts/cardiac/model/BeatStretches.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Where an interval of the time base lies. One that ends a stretch of beats is as long as a beat there would
/// be.
enum class IntervalKind { BetweenBeats, InFrontOfBeats, BehindBeats };

/// The intervals between heart pulses and the common time base onto which they are resampled. Set up once per
/// recording.
struct BeatTimeBase {
  std::vector<double> pulsePositions; ///< ascending, in samples of the series
  std::vector<double> pulseIntervals; ///< interval i runs from pulse i to pulse i + 1
  double medianPulseInterval = 0;     ///< approximate median
  int32_t modelLength = 0;            ///< values of one resampled interval: 3 to 100001, odd
  double warpStep = 0;                ///< 1 / (modelLength - 1)
  double warpMargin = 0;              ///< the warp parameter lies in [warpMargin, 1 - warpMargin]
  int32_t epochHalfLength = 0;        ///< an epoch has 2 x epochHalfLength + 1 values around a pulse
  std::vector<IntervalKind> kinds;    ///< of the intervals; none: all lie between beats

  size_t nrOfIntervals() const { return pulseIntervals.size(); }
  /// Epochs stand at the junctions of successive intervals.
  size_t nrOfEpochs() const { return pulseIntervals.size() - 1; }
  int32_t epochLength() const { return 2 * epochHalfLength + 1; }
  /// Whether an epoch has a pulse in its middle: between two stretches of beats there is none.
  bool isEpoch(size_t junction) const {
    return kinds.empty() || kinds[junction] != IntervalKind::BehindBeats;
  }
  /// First sample of an interval, and its length in whole samples.
  double start(size_t interval) const;
  double length(size_t interval) const;
};

/// `pulsePositions` holds at least three pulses. The model is finer where intervals differ much upwards from
/// their median: its length follows from (longest - median) / (median - shortest); a shortest interval within
/// half a sample of the median counts as equal to it.
BeatTimeBase makeBeatTimeBase(const std::vector<double>& pulsePositions, int32_t heartPeriod);

/// The time base of stretches of beats (ascending whole samples): every stretch has one more interval on
/// either side, so that every beat has an epoch. `pulsePositions` are then the starts of the intervals. With
/// `followsUsualBeat` the model has two values per sample of the 90th percentile of the intervals between
/// beats, otherwise those intervals decide as above.
BeatTimeBase makeStretchTimeBase(const std::vector<double>& beats, const std::vector<BeatStretch>& stretches,
                                 int32_t heartPeriod, bool followsUsualBeat);

/// The intervals between beats alone.
BeatTimeBase withoutOuterIntervals(const BeatTimeBase& base);

} // namespace emeg
