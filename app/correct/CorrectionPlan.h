#pragma once

#include "app/correct/ChannelPlan.h"
#include "app/correct/ConverterRun.h"
#include "app/correct/CorrectParameters.h"
#include "app/correct/KnownBeats.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// Everything that a run does, as it follows from the parameters and the recording's header before a sample
/// is read.
struct CorrectionPlan {
  ChannelPlan channels;
  int64_t firstTimePoint = 0; ///< of the recording
  int64_t nrOfTimePoints = 0; ///< from there on, at the recording's rate
  int decimationFactor = 1;
  bool hasInterval = false;
  HostAnswers::Dialogue dialogue; ///< all but the path
  TimingRequest timing;           ///< positions from `firstTimePoint` on
  BeatRequest beats;
  std::string suffix; ///< of the output's name

  int64_t nrOfOutputTimePoints() const { return (nrOfTimePoints - 1) / decimationFactor + 1; }
  int64_t endTimePoint() const { return firstTimePoint + nrOfTimePoints; }
};

/// `header` is that of the chosen channels. Throws UnusableInput when parameters contradict it.
CorrectionPlan planCorrection(const RecordingHeader& header, const CorrectParameters& parameters);

} // namespace emeg
