#pragma once

#include "files/exchange/Recording.h"

#include <string>
#include <vector>

namespace emeg {

/// Adds the markers of a marker file's text to the header, sorted by onset; the first new segment at the
/// start of the recording that has a date gives the recording's start. Entries that cannot be understood are
/// counted in the header's warnings.
void addBrainVisionMarkers(RecordingHeader& header, const std::string& text, const std::string& path);

/// The text of a marker file for the data file of that name. Onsets become the nearest samples; what changes
/// by that is told in `warnings`.
std::string brainVisionMarkerText(const RecordingHeader& header, const std::string& dataFileName,
                                  std::vector<std::string>& warnings);

} // namespace emeg
