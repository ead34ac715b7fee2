#pragma once

#include "artifacts/cardiac/known/KnownPulses.h"
#include "artifacts/cardiac/series/BcgSeries.h"
#include "engine/CorrectionSettings.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Heart beats below this number are too few for a model.
constexpr size_t fewestBeats = 3;

/// Known beats, and how much later each channel shows their artifact.
struct KnownBeats {
  KnownPulses pulses;
  HeartPeriod period;
  std::vector<int32_t> delays; ///< per channel of the series, samples; empty where there are too few beats
};

/// The beats of a request that is not blind. `ecg` is the electrocardiogram as the channels of `series` are,
/// empty where the request needs none.
KnownBeats findKnownBeats(const BeatRequest& request, const std::vector<double>& ecg,
                          const BcgSeries& series);

} // namespace emeg
