#pragma once

#include "app/correct/ChannelPlan.h"
#include "app/correct/CorrectParameters.h"
#include "engine/RecordingShape.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>

namespace emeg {

/// Everything that a run does, as it follows from the parameters and the recording's header before a sample
/// is read.
struct CorrectionPlan {
  ChannelPlan channels;
  int64_t firstTimePoint = 0; ///< of the recording
  int64_t nrOfTimePoints = 0; ///< from there on, at the recording's rate
  bool hasInterval = false;
  double samplesPerOutput = 1; ///< of the recording, at the new rate
  double outputRate = 0;       ///< Hz
  int64_t nrOfOutputs = 0;     ///< time points at that rate
  CorrectionSettings settings; ///< times from `firstTimePoint` on
  std::string suffix;          ///< of the output's name

  int64_t endTimePoint() const { return firstTimePoint + nrOfTimePoints; }
  /// What the correction is told of the recording.
  RecordingShape shapeOf(const RecordingHeader& header) const;
};

/// `header` is that of the chosen channels. Throws UnusableInput when parameters contradict it.
CorrectionPlan planCorrection(const RecordingHeader& header, const CorrectParameters& parameters);

} // namespace emeg
