#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>

namespace emeg {

/// A BrainVision recording (.vhdr with its .eeg and .vmrk): binary samples as INT_16, UINT_16, INT_32 or
/// IEEE_FLOAT_32, multiplexed or vectorized. Throws RecordingError.
std::unique_ptr<RecordingReader> openBrainVisionRecording(const std::string& path);

} // namespace emeg
