#pragma once

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// The trigger file that belongs to a corrected recording: "NAME_ArtifactsTriggers.prt" beside "NAME.ctc".
std::string triggerFileOf(const std::string& correctedPath);

/// The heart pulses of that file in seconds, ascending. Nothing when there is no such file or it holds no
/// "HeartPulseTriggers"; an empty list when these are without entries.
std::optional<std::vector<double>> readHeartPulses(const std::string& correctedPath,
                                                   double samplingFrequency);

} // namespace emeg
