#pragma once

#include "app/correct/BidsDataset.h"
#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// A text file beside the output.
struct CompanionFile {
  std::string path;
  std::string text;
};

/// The names that companionFiles() will use: of events and channels tables and of the description of the
/// events.
std::vector<std::string> companionPaths(const BidsPlace& place);

/// Events (those of the dataset's events.tsv, or else the recording's markers, and what was found), their
/// description and the channels. `markers` are those of the output, at `rate` Hz. Throws RecordingError for a
/// table of the dataset that cannot be read.
std::vector<CompanionFile> companionFiles(const BidsPlace& place, const CorrectionResult& result,
                                          const std::vector<RecordingMarker>& markers, double rate);

/// The description that BIDS asks for beside the recording: that of the source, what changed, and `sidecar`
/// (the run's own) under "EmegCorrect".
std::string bidsSidecar(const BidsPlace& place, const CorrectionResult& result,
                        const CorrectParameters& parameters, const std::string& sidecar);

/// The text of the derivative dataset's dataset_description.json.
std::string derivativeDescription();

} // namespace emeg
