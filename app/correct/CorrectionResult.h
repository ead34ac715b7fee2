#pragma once

#include "app/correct/CorrectParameters.h"
#include "app/correct/CorrectionPlan.h"
#include "app/correct/FileChecksums.h"
#include "app/correct/OutputPlace.h"
#include "engine/Findings.h"

#include <string>
#include <vector>

namespace emeg {

/// What a finished run made and found.
struct CorrectionResult {
  CorrectionPlan plan;
  OutputPlace place;
  RecordingHeader header;         ///< of the input's chosen channels
  std::vector<std::string> files; ///< written, the recording's last
  std::vector<InputFile> inputFiles;
  Findings found;
  std::string sidecar; ///< text of the file beside the output

  /// Of what is corrected.
  double seconds() const { return static_cast<double>(plan.nrOfTimePoints) / header.samplingFrequency; }
  /// Null when there is none.
  const QualityFigures* qualityOfLongest() const {
    if (found.quality.empty() || !found.hasSequence()) return nullptr;
    const auto& figures = found.quality[found.timing.indexOfLongest()];
    return figures ? &*figures : nullptr;
  }
  /// How templates were averaged, whatever was asked for.
  bool volumeWise() const { return plan.settings.timing.volumeWise || found.timing.slicesDoNotRepeat; }
};

} // namespace emeg
