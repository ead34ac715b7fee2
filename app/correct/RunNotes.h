#pragma once

#include "app/correct/CorrectionResult.h"

#include <string>
#include <vector>

namespace emeg {

/// What a user should know before the wait: sentences. Of a result only the plan and the header are looked
/// at.
std::vector<std::string> notesBefore(const CorrectionResult& planned, const CorrectParameters& parameters);

/// Throws FailedRun when what was found is not what the output needs: no scan (unless --allow-uncorrected),
/// or no heart beats where known ones were to be used.
void checkWhatWasFound(const CorrectionResult& result, const CorrectParameters& parameters);

/// What is worth knowing of a result; no reason to distrust it.
std::vector<std::string> notesOn(const CorrectionResult& result);

} // namespace emeg
