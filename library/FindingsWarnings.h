#pragma once

#include "library/CorrectionHandle.h"

#include <string>
#include <vector>

namespace emeg {

/// Something in the findings that makes the result less than was asked for.
struct FindingsWarning {
  const char* code; ///< for programs: "NoScan", ...
  std::string text; ///< for people, a sentence
};

/// Throws Refusal where nothing was looked for yet.
std::vector<FindingsWarning> warningsOf(const emeg_correction& correction);

} // namespace emeg
