#pragma once

#include "files/exchange/RecordingWriter.h"

#include <memory>
#include <string>

namespace emeg {

/// An EDF+ (16 bits) or BDF+ (24 bits) file, written with EDFlib: at most 640 signals. Markers become
/// annotations at multiples of 0.1 ms, with at most 40 bytes of text each.
std::unique_ptr<RecordingWriter> createEdfRecording(const std::string& path, const RecordingHeader& header,
                                                    const WriteOptions& options);

/// True when a channel's integers do not fit, so that ranges are needed.
bool edfNeedsRanges(const RecordingHeader& header, bool is24Bit);

} // namespace emeg
