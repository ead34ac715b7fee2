#pragma once

#include "artifacts/SinusoidRemoval.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "engine/Observer.h"
#include "engine/Workspace.h"
#include "engine/beats/BeatStrategy.h"
#include "engine/stages/RunPlan.h"
#include "engine/stages/StretchState.h"
#include "engine/timing/TimingStrategy.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// What all channels share while they are corrected as wholes.
struct SharedState {
  FilterResponse outputFilter, artifactHighPassFilter, bcgLowPassFilter;
  SinusoidTables sinusoidTables;

  MRSequence sequence;                               ///< sliceDuration is 0 until a channel has shown it
  std::vector<std::vector<double>> lowFrequencyRest; ///< per channel, one value per 0.1 s
  int64_t restStep = 0;
  int64_t restLength = 0;

  std::vector<std::vector<double>> bcgSeries; ///< per pulse channel, bcgLength + 1 values at about 250 Hz
  std::vector<double> ecgSeries;              ///< the same of the electrocardiogram, bcgLength values
  int64_t bcgStep = 0;
  int64_t bcgLength = 0;
  float bcgRate = 0;
  float bcgInterval = 0;

  std::vector<float> referenceSum;
};

/// One channel on its way through the stages.
struct StageRun {
  const RunPlan& plan;
  SharedState& shared;
  Workspace& work;
  Observer& observer;
  TimingStrategy& timing;
  BeatStrategy* beats = nullptr; ///< null where beats are not corrected

  int channel = 0;
  int pulseChannel = -1;           ///< its number among those whose heart beats are removed; -1: none of them
  StretchState* stretch = nullptr; ///< null where the channel is corrected as a whole

  bool removesBeats() const { return pulseChannel >= 0; }
  double* signal() const { return work.channelSignal(); }
  const ChannelRole& role() const { return plan.roleOf(channel); }
};

} // namespace emeg
