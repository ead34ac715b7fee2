#pragma once

#include "app/correct/ConverterRun.h"
#include "app/correct/CorrectParameters.h"
#include "app/correct/CorrectionPlan.h"
#include "app/correct/OutputPlace.h"
#include "app/correct/QualityFigures.h"
#include "app/correct/RunReport.h"
#include "app/correct/SaturatedChannels.h"

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// A file that was read.
struct InputFile {
  std::string path;
  std::string sha256;
};

/// What a finished run made and found.
struct CorrectionResult {
  CorrectionPlan plan;
  OutputPlace place;
  RecordingHeader header;         ///< of the input's chosen channels
  std::vector<std::string> files; ///< written, the recording's last
  std::vector<InputFile> inputFiles;
  Findings found;
  std::vector<RepairedChannel> repaired;
  std::optional<QualityFigures> quality; ///< nothing when the scan is too short to tell
  std::string sidecar;                   ///< text of the file beside the output
};

/// One run from a recording to the corrected recording: copy into a scratch folder, converter, warnings,
/// output. Nothing stands under a final name unless it is complete. Throws UnusableInput, FailedRun and
/// Interrupted.
CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report);

} // namespace emeg
