#pragma once

#include "app/correct/Correction.h"

#include <string>
#include <vector>

namespace emeg {

/// Whether what was detected repeats in the signal at all. Noise has rhythms of its own in which the
/// detection may see slices; a scan's lines stand far above what lies between them. Without figures the
/// benefit of the doubt.
bool looksLikeScan(const CorrectionResult& result);

/// Reasons to distrust the result, sentences with what to do. Empty when it worked.
std::vector<std::string> warningsOf(const CorrectionResult& result, const CorrectParameters& parameters);

} // namespace emeg
