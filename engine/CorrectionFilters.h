#pragma once

#include "artifacts/SinusoidTracking.h"
#include "dsp/FilterStages.h"
#include "dsp/FirFilter.h"
#include "dsp/Resampler.h"
#include "engine/CorrectionSettings.h"

#include <optional>
#include <vector>

namespace emeg {

/// The filter that templates are made behind: keeps what lies above 1 Hz. `rate` in Hz, at least 4.
FirFilter templateSplit(double rate);

/// The filters that the settings ask for, in the order in which they act. Throws std::invalid_argument, with
/// a sentence, for edges that the rate does not hold.
std::vector<FirFilter> outputFilters(const CorrectionSettings& settings, double rate);
std::vector<SinusoidTracker> lineTrackers(const CorrectionSettings& settings, double rate);

/// The edges of whole-channel filters as the plug-in's dialogues make them of the same numbers (32-bit
/// floats): an anti-aliasing edge at the new Nyquist frequency first. False in `isComplete` where there are
/// more than a filter holds.
struct PairedEdges {
  FilterStageList stages;
  bool isComplete = true;
};
PairedEdges pairedEdges(const CorrectionSettings& settings, double rate);

/// Nothing where the rate stays. Throws std::invalid_argument for rates that cannot be.
std::optional<Resampler> outputResampler(const CorrectionSettings& settings, double rate);

} // namespace emeg
