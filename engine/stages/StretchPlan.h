#pragma once

#include "artifacts/SinusoidTracking.h"
#include "artifacts/gradient/templates/SegmentRemoval.h"
#include "dsp/FirFilter.h"
#include "dsp/RecordingStretch.h"
#include "dsp/Resampler.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace emeg {

/// What the stages of a correction stretch by stretch take from it, made when scans and beats are known.
struct StretchPlan {
  int64_t recordingLength = 0;
  FirFilter split{{1.0}}; ///< keeps what lies above 1 Hz
  std::vector<ScanSegment> scans;
  double samplingFrequency = 0;
  bool volumeWise = true;
  int32_t windowSlices = 150;
  int64_t templateContext = 0;
  std::vector<SinusoidTracker> lines;
  std::vector<FirFilter> filters; ///< in the order in which they act
  std::optional<Resampler> resampler;
  double scale = 1;

  /// The heart beat artifact of every pulse channel, one value per `beatStep` samples from sample 0 on.
  std::vector<std::vector<double>> beatArtifacts;
  int64_t beatStep = 1;
};

/// Which samples every stage of a stretch needs for its outputs.
struct StretchRanges {
  PositionRange outputs;   ///< of the result, at its rate
  PositionRange filtered;  ///< what the resampler takes
  PositionRange signal;    ///< what the filters take: free of artifacts from here on
  PositionRange withLines; ///< what the sinusoids are fitted to
  PositionRange high;      ///< what templates are made from
  PositionRange input;     ///< what is read
};

StretchRanges rangesFor(const StretchPlan& plan, PositionRange outputs, bool hasScans);

} // namespace emeg
