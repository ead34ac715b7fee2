#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/FoundScan.h"
#include "engine/figures/ChannelQuality.h"
#include "files/exchange/RecordingReader.h"

#include <functional>
#include <optional>
#include <vector>

namespace emeg {

/// Compares the scans of the recording with its corrected version, each read once; both recordings hold the
/// corrected channels alone. Scaling is taken back. One per scan; nothing where it is too short to tell
/// (fewer than four volumes).
std::vector<std::optional<QualityFigures>> measureQuality(RecordingReader& before, RecordingReader& after,
                                                          const CorrectionPlan& plan,
                                                          const std::vector<FoundScan>& scans,
                                                          const std::function<void(double)>& progress);

} // namespace emeg
