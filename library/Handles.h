#pragma once

#include "engine/CorrectionSettings.h"
#include "engine/RecordingShape.h"

#include <emeg/emeg.h>

#include <cstdint>
#include <string>
#include <vector>

// What the handles of the C interface stand for; emeg_correction has a header of its own.

struct emeg_settings {
  emeg::CorrectionSettings values;
  std::vector<double> onsets; ///< of markers, seconds; what they stand for is in values.timing.markerKind
  mutable std::string error;
};

struct emeg_recording {
  emeg::RecordingShape shape;
  std::vector<std::string> names;
  std::vector<emeg_role> roles;
  mutable std::string error;
};
