#pragma once

#include "files/exchange/RecordingReader.h"

#include <memory>
#include <string>
#include <vector>

namespace emeg {

/// Indices of the channels of those names, in the order of the names. Throws RecordingError for a name that
/// no channel or more than one channel has, and for a name given twice.
std::vector<int> channelsNamed(const RecordingHeader& header, const std::vector<std::string>& names);

/// The recording of those channels alone. Markers of other channels go.
std::unique_ptr<RecordingReader> chooseChannels(std::unique_ptr<RecordingReader> reader,
                                                const std::vector<std::string>& names);

} // namespace emeg
