#pragma once

#include "app/correct/CorrectionResult.h"
#include "app/correct/RunReport.h"

namespace emeg {

/// One run from a recording to the corrected recording. Nothing stands under a final name unless it is
/// complete. Throws UnusableInput, FailedRun and Interrupted.
CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report);

} // namespace emeg
