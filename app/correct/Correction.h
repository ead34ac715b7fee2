#pragma once

#include "app/correct/ConverterRun.h"
#include "app/correct/CorrectParameters.h"
#include "app/correct/CorrectionPlan.h"
#include "app/correct/OutputPlace.h"
#include "app/correct/RunReport.h"

#include <string>
#include <vector>

namespace emeg {

/// What a finished run made and found.
struct CorrectionResult {
  CorrectionPlan plan;
  OutputPlace place;
  RecordingHeader header;         ///< of the input's chosen channels
  std::vector<std::string> files; ///< written, the recording's last
  Findings found;
};

/// One run from a recording to the corrected recording: copy into a scratch folder, converter, warnings,
/// output. Nothing stands under a final name unless it is complete. Throws UnusableInput, FailedRun and
/// Interrupted.
CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report);

} // namespace emeg
