#pragma once

#include "app/correct/CorrectionPlan.h"
#include "files/exchange/Recording.h"

#include <vector>

namespace emeg {

/// How the corrected recording is described: names, units and texts of the input, the start of the interval,
/// the new rate, and `markers`.
RecordingHeader outputHeaderOf(const RecordingHeader& input, const CorrectionPlan& plan,
                               std::vector<RecordingMarker> markers);

} // namespace emeg
