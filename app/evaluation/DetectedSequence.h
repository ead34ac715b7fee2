#pragma once

#include <optional>
#include <string>

namespace emeg {

/// What the plug-in logged about the scan.
struct DetectedSequence {
  int nrOfVolumes = 0;
  int nrOfSlicesPerVolume = 0;
  double volumeDuration = 0; ///< seconds
  double sliceDuration = 0;
  double firstTriggerTime = 0;
};

/// Reads it from the transcript of a host run (one JSON object per line). Nothing when no sequence was found.
/// Throws UnreadableFile when there is no such transcript.
std::optional<DetectedSequence> readDetectedSequence(const std::string& transcriptPath);

} // namespace emeg
