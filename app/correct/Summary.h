#pragma once

#include "app/correct/CorrectionResult.h"

#include <ostream>

namespace emeg {

/// A few lines on what was found, how much of the artifacts is left and where the result is.
void printSummary(std::ostream& out, const CorrectionResult& result, const CorrectParameters& parameters);

} // namespace emeg
