#include "tests/run/frozen/RunTables.h"

namespace emeg::test {

SimulationParameters simulated(Preset preset, double samplingFrequency, uint64_t seed, int nrOfChannels,
                               double seconds) {
  SimulationParameters parameters = presetParameters(preset, samplingFrequency);
  parameters.seed = seed;
  parameters.nrOfChannels = nrOfChannels;
  parameters.seconds = seconds;
  return parameters;
}

nlohmann::json withDescription(const nlohmann::json& inOrder) {
  return {{"files", {{"*.ccd", "eeg/run.ccd"}}}, {"inOrder", inOrder}};
}

nlohmann::json withoutDescription(const nlohmann::json& inOrder) {
  return {{"files", {{"*.ctc", "eeg/run.ctc"}}}, {"inOrder", inOrder}};
}

std::vector<FrozenRun> frozenRuns() {
  std::vector<FrozenRun> runs;
  for (const std::vector<FrozenRun>& table : {correctionRuns(), inputFileRuns(), endedRuns(), generalRuns()})
    runs.insert(runs.end(), table.begin(), table.end());
  return runs;
}

} // namespace emeg::test
