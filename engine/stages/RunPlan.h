#pragma once

#include "artifacts/SaturationRepair.h"
#include "dsp/FilterStages.h"
#include "dsp/FrequencyFilter.h"
#include "engine/ChannelRole.h"
#include "engine/Method.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace emeg {

/// Everything that the stages of a correction need to know before the first sample. Does not change while
/// channels are corrected.
struct RunPlan {
  Method method;
  double samplingFrequency = 0;   ///< Hz
  double samplingInterval = 0;    ///< seconds
  std::vector<ChannelRole> roles; ///< one per channel of the store

  // --- which stages are on ---
  bool correctSaturations = false;
  bool correctGradient = false;
  bool correctBCG = false;
  bool removeLineSinusoids = false;
  bool filteringNeeded = false;
  bool useAverageReference = false;
  /// Low frequencies are split off and come back: for the two above, and for a stage that is no more than a
  /// switch yet.
  bool splitsLowFrequencies = false;

  // --- what they are to do ---
  std::optional<SaturationLimits> saturationLimits; ///< nothing where the samples cannot saturate
  bool volumeWise = false;
  int proposedWindow = 150;             ///< half-length in slices
  std::vector<double> lineFrequencies;  ///< Hz
  std::vector<double> referenceWeights; ///< one per channel
  FilterStageList filterStages;
  int decimationFactor = 1;

  // --- whole channels: samples of the interval, and of it and its margins as the store holds them ---
  int64_t nrOfSamples = 0;
  int64_t nrOfProcessed = 0;
  int64_t margin = 0; ///< processed samples in front of the interval
  int32_t log2FftLength = 0;
  int64_t fftLength = 0;
  int64_t nrOfOutputs = 0; ///< samples behind the decimation
  double outputRate = 0;   ///< Hz

  const ChannelRole& roleOf(int channel) const { return roles[static_cast<size_t>(channel)]; }
};

} // namespace emeg
