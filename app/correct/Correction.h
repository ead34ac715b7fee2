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
  std::vector<std::optional<QualityFigures>> quality; ///< per scan; nothing where it is too short to tell
  std::string sidecar;                                ///< text of the file beside the output

  /// Null when there is none.
  const QualityFigures* qualityOfLongest() const {
    if (quality.empty() || found.timing.scans.empty()) return nullptr;
    const auto& figures = quality[found.timing.indexOfLongest()];
    return figures ? &*figures : nullptr;
  }
  /// How templates were averaged, whatever was asked for.
  bool volumeWise() const { return plan.dialogue.volumeWise || found.timing.slicesDoNotRepeat; }
};

/// Whether a timing was found whose scan shows in the recording.
bool looksLikeScan(const CorrectionResult& result);

/// One run from a recording to the corrected recording: copy into a scratch folder, converter, warnings,
/// output. Nothing stands under a final name unless it is complete. Throws UnusableInput, FailedRun and
/// Interrupted.
CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report);

} // namespace emeg
