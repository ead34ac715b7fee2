#pragma once

#include "artifacts/cardiac/search/HeartPeriod.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// A stretch without known beats in which beats at even distances stand in for them. Samples of the series.
struct FilledGap {
  double from = 0; ///< the beat in front of it
  double to = 0;   ///< the beat behind it
  int64_t nrOfBeats = 0;
};

/// Heart beats that somebody or something else has found, as the pulse model needs them.
struct KnownPulses {
  /// Ascending whole samples of the series: between two of them the model leaves no sample out.
  std::vector<double> positions;
  int64_t nrOfOutside = 0;     ///< left out: outside the series, or not a number
  int64_t nrOfDoubled = 0;     ///< left out: closer than a quarter second to a better one
  int64_t nrOfStray = 0;       ///< left out: between two beats of a regular rhythm
  std::vector<FilledGap> gaps; ///< in ascending order
};

/// Shortest interval between two beats of a heart, seconds.
constexpr double shortestBeatInterval = 0.25;

/// Makes a usable list of beats (in samples of a series of `length` samples at `rate` Hz, in any order) that
/// may be doubled, stray, missing or outside. An interval that is much longer than those around it is filled:
/// one interval of many beats would ask for a model of as many values, and the artifact in it would stay. The
/// pause behind an early (ectopic) beat is none. With `withoutStray`, beats between two others are left out
/// where the rhythm says that they are none: for lists made by hand or by another program.
KnownPulses usablePulses(std::span<const double> beats, int64_t length, float rate, bool withoutStray);

/// The period that goes with these pulses: their median interval. 0 for fewer than two.
HeartPeriod periodOfPulses(const std::vector<double>& positions);

} // namespace emeg
