#pragma once

#include "app/correct/CorrectionPlan.h"

#include <string>

namespace emeg {

/// Where a recording stands in a BIDS dataset, and where its derivative belongs (Brain Imaging Data
/// Structure 1.8: EEG, and derivatives).
struct BidsPlace {
  std::string root;             ///< of the dataset
  std::string relativeFolder;   ///< of the recording in it: "sub-01/ses-2/eeg"
  std::string entities;         ///< of its name: "sub-01_ses-2_task-rest"
  std::string derivativeRoot;   ///< "ROOT/derivatives/emeg"
  std::string derivativeFolder; ///< below it
  std::string derivativeStem;   ///< path and entities of the output, without "_eeg.vhdr"

  std::string sourceFile(const std::string& ending) const {
    return root + "/" + relativeFolder + "/" + entities + ending;
  }
  /// The value of an entity of the name ("rest" for "task"); empty when it has none.
  std::string entity(const std::string& key) const;
};

/// Throws UnusableInput when the recording's name is not that of an EEG recording in a dataset.
BidsPlace bidsPlaceOf(const std::string& input, const std::string& suffix);

/// What the recording's channels.tsv says of types and bad channels is believed rather than guessed.
void applyBidsChannels(const BidsPlace& place, RecordingHeader& header);

} // namespace emeg
