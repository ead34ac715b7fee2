#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>

namespace emeg {

/// A channel time course (CTC) file in microvolts. Names and good flags come from the channel description
/// (CCD) beside it, markers from the protocol (PRT) that it names, or else from the protocol of the same
/// name, and from its companion "..._ArtifactsTriggers.prt". Throws RecordingError.
std::unique_ptr<RecordingReader> openCtcRecording(const std::string& path);

} // namespace emeg
