#pragma once

#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// Reasons to distrust the result, sentences with what to do. Empty when it worked.
std::vector<std::string> warningsOf(const CorrectionResult& result, const CorrectParameters& parameters);

} // namespace emeg
