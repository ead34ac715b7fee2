#pragma once

#include "app/evaluation/SimulatedTruth.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// What a correction left of a known artifact, per channel, in microvolts RMS.
struct ChannelResidual {
  std::string name;
  double artifactUv = 0; ///< the gradient artifact, over the scan
  double residualUv = 0; ///< corrected minus clean, over the scan
  double outsideUv = 0;  ///< corrected minus recorded, more than one volume outside the scan
  /// How far the residual lies below the artifact; not a number for a channel without any.
  double decibels() const;
};

/// Compares a corrected recording with the truth, which must have a scan. Clean means without gradient
/// artifact: the heart beat artifact, if there is one, belongs to it, unless `heartRemoved` says that the
/// correction was to take it away as well. Throws UnreadableFile when files are missing or do not belong
/// together.
std::vector<ChannelResidual> measureResiduals(const std::string& correctedPath, const SimulatedTruth& truth,
                                              bool heartRemoved = false);

} // namespace emeg
