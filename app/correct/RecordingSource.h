#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/FileChecksums.h"
#include "app/correct/ProgressObserver.h"
#include "engine/Correction.h"
#include "files/exchange/RecordingReader.h"

#include <memory>
#include <vector>

namespace emeg {

/// The recording that is corrected. Its samples are read once, and checksums of its files are taken on the
/// way.
class RecordingSource {
public:
  /// Opens it. Throws UnusableInput.
  explicit RecordingSource(const CorrectParameters& parameters);

  const RecordingHeader& header() const { return header_; }

  /// Hands the samples of the plan's stretch to a correction. Throws UnusableInput when they cannot be read.
  void takeInto(Correction& correction, const CorrectionPlan& plan, ProgressObserver& observer);

  /// Of all files. Reads what taking in has not.
  std::vector<InputFile> checksums();

  /// Channels that pass unchanged and have values that are not exactly 32-bit floats, so that they are read
  /// again for the output. Known once the samples were taken in.
  const std::vector<int>& channelsToReadAgain() const { return channelsToReadAgain_; }
  RecordingReader& reader() { return *reader_; }

private:
  void lookForInexactValues(const CorrectionPlan& plan, int64_t count);

  std::unique_ptr<RecordingReader> reader_;
  RecordingHeader header_; ///< with the channel types of a BIDS dataset
  std::unique_ptr<FileChecksums> checksums_;
  std::vector<double> block_;
  std::vector<int> channelsToReadAgain_;
};

} // namespace emeg
