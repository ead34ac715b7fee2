#pragma once

#include "files/exchange/RecordingWriter.h"

#include <memory>
#include <string>

namespace emeg {

/// A CTC file of multiplexed 32-bit floats in microvolts, with its channel description (CCD), and protocols
/// (PRT) when there are markers: those of detected onsets go to "..._ArtifactsTriggers.prt".
std::unique_ptr<RecordingWriter> createCtcRecording(const std::string& path, const RecordingHeader& header,
                                                    const WriteOptions& options);

} // namespace emeg
