#pragma once

#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// What the user should know of the heart beats that were found or given: the doubts about them, in sentences
/// with a remedy. A result of a run with --bcg.
std::vector<std::string> beatWarningsOf(const CorrectionResult& result);

} // namespace emeg
