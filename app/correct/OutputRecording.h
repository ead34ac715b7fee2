#pragma once

#include "app/correct/CorrectionResult.h"
#include "app/correct/ProgressObserver.h"
#include "app/correct/RecordingSource.h"
#include "app/correct/RunReport.h"
#include "engine/Correction.h"
#include "files/exchange/RecordingWriter.h"

#include <memory>
#include <vector>

namespace emeg {

/// The corrected recording and the files beside it. Each is written once; none has its final name before
/// finish(). Throws RecordingError.
class OutputRecording {
public:
  /// Whether the format needs the range of every channel before the first sample.
  static bool needsRanges(const CorrectionResult& planned);

  OutputRecording(const CorrectParameters& parameters, CorrectionResult& result);

  /// Corrects, and writes what comes out.
  void write(Correction& correction, RecordingSource& input, ProgressObserver& observer);

  /// Gives the files their names: companions and the sidecar first, the recording last. Notes are added to
  /// the report; the result gets its files.
  void finish(RunReport& report);

private:
  std::string describeRun(const RunReport& report);
  void describeDerivatives() const;

  const CorrectParameters& parameters_;
  CorrectionResult& result_;
  RecordingHeader header_;
  std::unique_ptr<RecordingWriter> writer_;
};

} // namespace emeg
