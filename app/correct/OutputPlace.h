#pragma once

#include "app/correct/BidsDataset.h"
#include "app/correct/CorrectionPlan.h"

#include <optional>
#include <string>

namespace emeg {

/// Where a run's results go.
struct OutputPlace {
  std::string recording;         ///< the file that the user names
  std::string sidecar;           ///< the JSON file beside it
  std::optional<BidsPlace> bids; ///< when it belongs to a BIDS dataset
};

/// The output that was asked for, or by default the input's name with the converter's suffix in the input's
/// format (BrainVision for formats that are not written). Throws UnusableInput for a format that is not
/// written, and when the output is the input.
OutputPlace outputPlaceOf(const CorrectParameters& parameters, const CorrectionPlan& plan);

/// Throws UnusableInput when a file of the results exists and must not be replaced, or the folder does not
/// exist. What the format adds (.eeg, .vmrk) is looked at, too, so that nobody waits for a run whose result
/// cannot be stored.
void checkPlaceIsFree(const OutputPlace& place, bool force);

/// The folder that a file lies in, "." for one without a folder.
std::string folderOf(const std::string& path);

} // namespace emeg
