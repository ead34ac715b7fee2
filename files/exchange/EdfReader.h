#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// An EDF, EDF+, BDF or BDF+ file, read with EDFlib: at most 640 signals, continuous. Annotations become
/// markers. Signals of different rates are refused unless `channels` (names; empty: all) chooses some that
/// agree. Throws RecordingError.
std::unique_ptr<RecordingReader> openEdfRecording(const std::string& path,
                                                  const std::vector<std::string>& channels);

} // namespace emeg
