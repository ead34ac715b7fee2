#pragma once

#include "app/correct/CorrectParameters.h"

#include <string>
#include <vector>

namespace emeg {

/// What a user should know of the filters before a run.
struct FilterAdvice {
  std::vector<std::string> notes;    ///< what single filters do that one may not expect
  std::vector<std::string> warnings; ///< filters that together do something else than each alone
};

/// Compares the response of all edges together, as the converter builds it, with the product of what every
/// filter does alone: the converter pairs neighbouring edges, so that a stop band is built between edges that
/// do not belong together.
FilterAdvice adviceOnFilters(const CorrectParameters& parameters, int decimationFactor,
                             double samplingFrequency);

} // namespace emeg
