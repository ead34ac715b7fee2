#pragma once

#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// What the user should know of the heart beats that were found or given: sentences with a remedy. A result
/// of a run with --bcg.
std::vector<std::string> beatWarningsOf(const CorrectionResult& result);

/// Why the heart beats that were found in the EEG may be something else, as parts of a sentence; empty when
/// nothing speaks against them.
std::vector<std::string> doubtsAboutBeats(const Findings& found);

} // namespace emeg
