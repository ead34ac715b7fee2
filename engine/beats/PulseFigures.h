#pragma once

#include "engine/Findings.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Compares a channel's series below 35 Hz with what is left of it when `estimate` is subtracted, from the
/// first to the last pulse (positions in samples of the series). The average over the beats shows what is
/// locked to the heart (Allen, Polizzi, Krakow, Fish, Lemieux: Identification of EEG events in the MR
/// scanner: the problem of pulse artifact and a method for its subtraction, NeuroImage 8 (1998)).
PulseChannelFigures measurePulseFigures(const std::vector<double>& series,
                                        const std::vector<double>& estimate,
                                        const std::vector<double>& pulsePositions, int64_t length);

} // namespace emeg
