#pragma once

#include "files/exchange/RecordingWriter.h"

#include <memory>
#include <string>

namespace emeg {

/// A BrainVision recording of multiplexed 32-bit floats: .vhdr, and beside it .eeg and .vmrk. Units and
/// channels without a voltage survive; markers move to the nearest sample.
std::unique_ptr<RecordingWriter> createBrainVisionRecording(const std::string& path,
                                                            const RecordingHeader& header,
                                                            const WriteOptions& options);

} // namespace emeg
