#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <string>

namespace emeg {

/// Whether a sequence can be true of a recording of so many seconds by its numbers alone: counts and
/// durations that fit each other and the length, and a mark that tells where a volume begins. Empty when it
/// can; else what speaks against it, a phrase for people.
std::string doubtAbout(const MRSequence& sequence, double seconds, double samplingFrequency);

} // namespace emeg
