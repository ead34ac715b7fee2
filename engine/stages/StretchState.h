#pragma once

#include "engine/stages/StretchPlan.h"

#include <vector>

namespace emeg {

/// A stretch of one channel on its way through the stages, with the buffers that it needs. Used again for the
/// next one.
struct StretchState {
  const StretchPlan& plan;
  SegmentRemoval templates;
  StretchRanges ranges;

  std::vector<double> samples; ///< of the channel, at positions `held`
  PositionRange held;
  std::vector<double> high;     ///< above 1 Hz, at ranges.high
  std::vector<double> estimate; ///< of an artifact
  std::vector<double> output;   ///< the result, at ranges.outputs
  std::vector<float> asStored;

  RecordingStretch stretch() const { return {samples, held.begin, plan.recordingLength}; }
  /// The part of the samples at positions of `range`, which lies within `held`.
  std::span<double> at(PositionRange range) {
    return std::span(samples).subspan(static_cast<size_t>(range.begin - held.begin),
                                      static_cast<size_t>(range.length()));
  }
};

} // namespace emeg
