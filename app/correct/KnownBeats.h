#pragma once

#include "app/correct/CorrectParameters.h"
#include "artifacts/cardiac/known/KnownPulses.h"
#include "engine/CorrectionSettings.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>

namespace emeg {

/// "blind", "markers", "ecg".
const char* nameOf(BeatSource source);

/// What `parameters` ask for, in the stretch of `nrOfTimePoints` samples from `firstTimePoint` on. Throws
/// UnusableInput when the recording has no such markers or channel, or markers that cannot be heart beats.
BeatRequest requestedBeats(const RecordingHeader& header, const CorrectParameters& parameters,
                           int64_t firstTimePoint, int64_t nrOfTimePoints);

/// A sentence when too few of the beats that a request knows could be used; else empty.
std::string problemWithKnownBeats(const BeatRequest& request, const KnownPulses& pulses);

} // namespace emeg
