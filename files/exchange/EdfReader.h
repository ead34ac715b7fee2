#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// A continuous EDF, EDF+, BDF or BDF+ file. Annotations become markers. Signals of different rates are
/// refused unless `channels` (names; empty: all) chooses some that agree. Throws RecordingError.
///
/// EDFlib would read them too, but refuses files of other programs without saying why: any that departs from
/// the letter of the format, as those of biosig do, and any of more than 640 signals.
std::unique_ptr<RecordingReader> openEdfRecording(const std::string& path,
                                                  const std::vector<std::string>& channels);

} // namespace emeg
