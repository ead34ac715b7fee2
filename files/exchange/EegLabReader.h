#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>

namespace emeg {

/// A continuous EEGLAB data set (.set, MAT version 5 or 7.3, with the samples in it or in an .fdt file beside
/// it). Compressed samples of version 5 are unpacked into a scratch file first. Throws RecordingError.
std::unique_ptr<RecordingReader> openEegLabRecording(const std::string& path);

} // namespace emeg
