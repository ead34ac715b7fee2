#pragma once

#include "engine/stages/StageRun.h"

#include <span>

namespace emeg {

/// Which side of the search for heart beats a stage stands on.
enum class Pass { BeforeBeats, BehindBeats };

/// One stage of the correction of a channel.
struct Stage {
  const char* name;
  Pass pass;
  bool (*isOn)(const StageRun&);
  void (*apply)(StageRun&);
};

/// All stages in their order. A new one is an entry here and a file beside this one.
std::span<const Stage> correctionStages();

/// Sends a channel through those stages of one side that are on.
void applyStages(Pass pass, StageRun& run);

} // namespace emeg
