#pragma once

#include "engine/CorrectionSettings.h"
#include "engine/RecordingShape.h"

namespace emeg {

/// Throws Refusal where settings contradict each other or the recording.
void checkSettings(const CorrectionSettings& settings, const RecordingShape& shape);

} // namespace emeg
