#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/ScratchInput.h"

#include <functional>
#include <string>
#include <vector>

namespace emeg {

/// A channel whose samples at the limits of the file's integers were replaced.
struct RepairedChannel {
  int channel = 0; ///< number in the recording
  int64_t nrOfRepaired = 0;
  int64_t nrOfLeft = 0; ///< in front of the first or behind the last usable sample: they stay
};

/// Throws UnusableInput when no corrected channel is stored as integers.
void checkSaturationCanShow(const RecordingHeader& header, const CorrectionPlan& plan,
                            const std::string& input);

/// Looks for saturated samples in every channel of a scratch file of 64-bit floats, in the integers that the
/// recording stores, and replaces them by a cubic spline through the others. Every other sample keeps its
/// bits. One channel at a time is in memory.
std::vector<RepairedChannel> repairSaturatedChannels(const std::string& scratchPath,
                                                     const RecordingHeader& header,
                                                     const CorrectionPlan& plan,
                                                     const std::function<void(double)>& progress);

} // namespace emeg
