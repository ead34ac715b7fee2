#pragma once

#include "files/exchange/Recording.h"

#include <string>
#include <vector>

namespace emeg {

/// The channels' names as labels: printable ASCII, at most 16 characters, each only once. Changed names are
/// told in `warnings`.
std::vector<std::string> edfLabels(const RecordingHeader& header, std::vector<std::string>& warnings);

/// The unit as EDF+ writes it ("uV", "degC"): printable ASCII, at most 8 characters.
std::string edfUnit(const RecordingChannel& channel);

/// A text in printable ASCII; other characters become '_'.
std::string edfText(const std::string& text);

} // namespace emeg
