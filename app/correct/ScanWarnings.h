#pragma once

#include "app/correct/Correction.h"

#include <string>
#include <vector>

namespace emeg {

/// Whether what was detected repeats in the signal at all. Noise has rhythms of its own in which the quiet
/// between slices may be seen; a scan's lines stand far above what lies between them. Without figures, and
/// where the timing comes from elsewhere (it is then confirmed by the similarity of volumes), the benefit of
/// the doubt.
bool looksLikeScan(const CorrectionResult& result);

/// What is worth knowing about the timing of the scans; no reason to distrust it.
std::vector<std::string> notesOnTiming(const FoundScans& timing);

/// Reasons to distrust the correction of the gradient artifact, sentences with what to do.
std::vector<std::string> warningsOnScans(const CorrectionResult& result);

/// "Fp1, Fp2, F3 and 5 more".
std::string listOf(const std::vector<std::string>& names);

} // namespace emeg
