#pragma once

#include "app/evaluation/SimulatedTruth.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// What a correction left of a known artifact, in microvolts RMS.
struct ScanResidual {
  double artifactUv = 0; ///< the gradient artifact
  double residualUv = 0; ///< corrected minus clean
  /// How far the residual lies below the artifact; not a number where there is none.
  double decibels() const;
};

/// The same for a channel, over all scans and over each of them.
struct ChannelResidual : ScanResidual {
  std::string name;
  double outsideUv = 0; ///< corrected minus recorded, more than one volume away from every scan
  std::vector<ScanResidual> scans;
};

/// Compares a corrected recording with the truth, which must have a scan. Clean means without gradient
/// artifact: the heart beat artifact, if there is one, belongs to it, unless `heartRemoved` says that the
/// correction was to take it away as well. Throws UnreadableFile when files are missing or do not belong
/// together.
std::vector<ChannelResidual> measureResiduals(const std::string& correctedPath, const SimulatedTruth& truth,
                                              bool heartRemoved = false);

} // namespace emeg
