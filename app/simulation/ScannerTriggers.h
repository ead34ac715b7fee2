#pragma once

#include "app/simulation/GradientArtifact.h"
#include "app/simulation/SimulationParameters.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Time points at which an amplifier that samples its trigger input notes down the scanner's triggers: the
/// first ones at or behind the onsets of all volumes or slices, in ascending order; those within the
/// recording.
std::vector<int64_t> scannerTriggers(const SimulationParameters& parameters,
                                     const GradientArtifact& artifact);

} // namespace emeg
