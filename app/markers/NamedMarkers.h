#pragma once

#include "files/exchange/Recording.h"

#include <string>
#include <vector>

namespace emeg {

/// Onsets in samples, ascending, of all markers that go by this name: their description, their type or
/// "type/description". Blanks count ("R128", "S  1", "Response/R128" as in the file); where nothing goes by
/// exactly this name, runs of blanks count as one ("T 1" for "T  1"). Throws UnusableInput, with the names
/// that the recording has, when no marker goes by it.
std::vector<double> onsetsOfMarkers(const RecordingHeader& header, const std::string& name);

/// Without those that come less than 10 ms behind another one: two markers that close stand for one event.
/// Onsets ascend.
std::vector<double> withoutDoubles(const std::vector<double>& onsets, double samplingFrequency);

} // namespace emeg
