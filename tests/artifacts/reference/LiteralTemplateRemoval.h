#pragma once

#include "tests/artifacts/reference/LiteralSequenceDetection.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// A plain second implementation of the gradient templates: one template after the other, sample by sample.

/// Where and how strongly one template enters the artifact estimate, and which onsets it is averaged from.
struct LiteralTemplate {
  struct Neighbour {
    int32_t volume = 0;
    int32_t slice = 0;
    double onset = 0;  ///< samples
    double weight = 0; ///< not normalised
  };

  bool exists = true; ///< false: no such stretch (a slot without room)
  double onset = 0;   ///< samples
  int64_t begin = 0;  ///< k1, the sample at or before the onset
  int64_t end = 0;    ///< k2, the last sample of the segment
  int64_t ramp = 0;   ///< R
  std::vector<Neighbour> neighbours;

  /// What the truncated slot leaves room for: the templates before and behind it.
  bool fillsRest = false;
  int64_t endOfLastSlice = 0;
  int64_t beginOfNextFirstSlice = 0;

  /// Weight at sample `position`, 0 outside.
  double rampWeight(int64_t position) const;
};

/// 6 u^5 - 15 u^4 + 10 u^3.
double literalRamp(double u);

/// The template of slice `slice` (the slot behind the last slice when `slice` is the number of slices) of a
/// volume.
LiteralTemplate literalSliceTemplate(const LiteralTiming& timing, double samplingFrequency,
                                     int32_t windowHalfLength, int32_t volume, int32_t slice);
/// The template of a whole volume.
LiteralTemplate literalVolumeTemplate(const LiteralTiming& timing, double samplingFrequency,
                                      int32_t windowHalfLength, int32_t volume);

/// The sum of all weighted templates of a channel: what has to be subtracted from it. `windowHalfLength` in
/// seconds.
std::vector<double> literalArtifactEstimate(const std::vector<double>& channelSignal,
                                            double samplingFrequency, const LiteralTiming& timing,
                                            int32_t windowHalfLength, bool volumeWise);

} // namespace emeg
