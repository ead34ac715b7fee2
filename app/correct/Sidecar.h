#pragma once

#include "app/correct/CorrectionResult.h"
#include "app/correct/RunReport.h"

#include <string>

namespace emeg {

/// The JSON text beside the output: what was done, with which parameters, from which files, what was found,
/// how good it is, and every note and warning.
std::string sidecarText(const CorrectionResult& result, const CorrectParameters& parameters,
                        const RunReport& report);

/// Writes a small text file whole or not at all. Throws RecordingError.
void writeWholeFile(const std::string& path, const std::string& text, bool overwrite);

} // namespace emeg
