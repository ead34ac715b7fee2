#pragma once

#include "tests/run/frozen/FrozenRun.h"

#include <string>
#include <vector>

namespace emeg::test {

/// A simulated recording with a few channels.
SimulationParameters simulated(Preset preset, double samplingFrequency, uint64_t seed, int nrOfChannels,
                               double seconds);

/// Answers that choose "eeg/run.ccd", or "eeg/run.ctc" alone, and answer the questions in order.
nlohmann::json withDescription(const nlohmann::json& inOrder);
nlohmann::json withoutDescription(const nlohmann::json& inOrder);

/// The four corrections that the plug-in offers, of many kinds of recording.
std::vector<FrozenRun> correctionRuns();
/// The recording in other sample types and orders, and with other files beside it.
std::vector<FrozenRun> inputFileRuns();
/// Runs that the user or the plug-in ends early.
std::vector<FrozenRun> endedRuns();
/// Runs with the dialogues that the artifact plug-in does not offer.
std::vector<FrozenRun> generalRuns();

} // namespace emeg::test
