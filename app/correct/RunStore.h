#pragma once

#include "app/correct/CorrectionResult.h"
#include "app/correct/RunReport.h"
#include "app/correct/ScratchFolder.h"
#include "engine/RecordingShape.h"
#include "engine/store/ChannelStore.h"

#include <memory>

namespace emeg {

/// Where the samples of a run are while they are corrected: in memory where they fit what --memory allows and
/// the machine has, else in one temporary file. Made once it is known that the run has room.
class RunStore {
public:
  /// Throws FailedRun when memory or disk space are missing, with both figures and the remedy.
  RunStore(const CorrectParameters& parameters, const CorrectionResult& planned, const RecordingShape& shape,
           RunReport& report);

  ChannelStore& channels() { return *channels_; }

private:
  std::unique_ptr<ScratchFolder> folder_; ///< goes after the file in it
  std::unique_ptr<ChannelStore> channels_;
};

} // namespace emeg
