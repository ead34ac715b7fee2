#pragma once

#include "app/evaluation/SimulatedTruth.h"

#include <string>
#include <vector>

namespace emeg {

/// What became of a channel's heart beat artifact in some stretch of the recording.
struct ChannelExplained {
  std::string name;
  double artifactUv = 0; ///< RMS of the true artifact
  double residualUv = 0; ///< RMS of the artifact minus its estimate
  /// 1 - sum((artifact - estimate)^2) / sum(artifact^2). Not a number for a channel without artifact.
  double explained() const;
};

/// The same with both sums over all channels.
double explainedInAll(const std::vector<ChannelExplained>& channels);

/// Compares the time points from `firstSecond` to `lastSecond` (both inclusive, cut to the recording). The
/// estimate is what the correction took away: all that is recorded but for the gradient artifact, minus the
/// corrected recording; what a gradient correction left behind or took too much counts against it. With
/// `gradientCorrectedPath`, the same recording after the gradient correction alone, the estimate is that one
/// minus the corrected recording, whatever the gradient correction did. The truth must have a heart. Throws
/// UnreadableFile when files are missing or do not belong together.
std::vector<ChannelExplained> measureExplained(const std::string& correctedPath, const SimulatedTruth& truth,
                                               double firstSecond, double lastSecond,
                                               const std::string& gradientCorrectedPath = "");

} // namespace emeg
