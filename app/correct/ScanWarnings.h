#pragma once

#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// What is worth knowing about the timing of the scans; no reason to distrust it.
std::vector<std::string> notesOnTiming(const FoundScans& timing);

/// Reasons to distrust the correction of the gradient artifact, sentences with what to do.
std::vector<std::string> warningsOnScans(const CorrectionResult& result);

/// "Fp1, Fp2, F3 and 5 more".
std::string listOf(const std::vector<std::string>& names);

} // namespace emeg
