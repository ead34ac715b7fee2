#pragma once

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// Where the heart pulses of a corrected recording are: "NAME_ArtifactsTriggers.prt" beside "NAME.ctc", the
/// recording itself in any other format.
std::string triggerFileOf(const std::string& correctedPath);

/// The heart pulses of that file in seconds, ascending. Nothing when there is no such file or it holds no
/// "HeartPulseTriggers"; an empty list when a protocol has these without entries. Throws UnreadableFile for a
/// recording of another format that cannot be read.
std::optional<std::vector<double>> readHeartPulses(const std::string& correctedPath,
                                                   double samplingFrequency);

} // namespace emeg
