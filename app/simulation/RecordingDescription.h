#pragma once

#include "app/simulation/SimulationParameters.h"
#include "files/exchange/Recording.h"
#include "files/formats/CcdFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// The channel description of a simulated recording: channel names, every channel good, and the names
/// (without folder) of the recording and of its protocol, the latter empty when there is none.
ChannelDescription describeChannels(const SimulationParameters& parameters, const std::string& ctcFileName,
                                    const std::string& prtFileName);

/// What a file of another format says of a simulated recording: electrode names, and as markers the blocks of
/// the protocol and the scanner's triggers (time points); with an electrocardiogram markers "R" at its R
/// peaks, too.
RecordingHeader describeRecording(const SimulationParameters& parameters,
                                  const std::vector<int64_t>& triggers);

/// The text of a protocol file for a simulated recording: a block design with the conditions "Rest" and
/// "Task" that take turns every ten seconds (at least three blocks of each fit into short recordings), and
/// the scanner's triggers (time points), one sample long.
std::string protocolText(const SimulationParameters& parameters, const std::vector<int64_t>& triggers,
                         const std::string& ctcFileName);

} // namespace emeg
