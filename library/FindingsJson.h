#pragma once

#include "library/CorrectionHandle.h"

#include <string>

namespace emeg {

/// What a correction has found, as one JSON object: docs/library.md describes its members. Throws Refusal
/// where nothing was looked for yet.
std::string findingsJson(const emeg_correction& correction);

} // namespace emeg
