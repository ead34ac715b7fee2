#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <optional>
#include <string>

namespace emeg {

/// Reads what the plug-in logged about the scan, its counts and times, from the transcript of a host run (one
/// JSON object per line). Nothing when no sequence was found. Throws UnreadableFile when there is no such
/// transcript.
std::optional<MRSequence> readDetectedSequence(const std::string& transcriptPath);

} // namespace emeg
