#pragma once

#include "app/correct/CorrectionPlan.h"
#include "engine/Findings.h"
#include "files/exchange/Recording.h"

#include <vector>

namespace emeg {

inline constexpr const char* gradientMarkerName = "MRGradientTriggers";
inline constexpr const char* pulseMarkerName = "HeartPulseTriggers";
/// Programs that leave out annotated stretches look for names that begin with "BAD".
inline constexpr const char* unmodelledMarkerName = "BAD_no_pulse_model";
inline constexpr const char* guessedMarkerName = "BAD_guessed_pulses";

/// The recording's markers at their places in the corrected interval, those that it does not touch left out,
/// and those of what was found, in ascending order. With `atWholeSamples` (a format that knows no others) the
/// onsets of what was found are rounded.
std::vector<RecordingMarker> transferMarkers(const RecordingHeader& header, const CorrectionPlan& plan,
                                             const Findings& found, bool atWholeSamples);

} // namespace emeg
