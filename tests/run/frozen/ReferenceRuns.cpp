#include "tests/run/frozen/FrozenRun.h"

namespace emeg::test {

/// Two minutes of every kind, both ways of averaging; the same recordings as in tests/run/reference.
std::vector<FrozenRun> frozenRuns() {
  std::vector<FrozenRun> runs;
  for (const double samplingFrequency : {2000.0, 5000.0}) {
    for (const Preset preset : {Preset::Gap, Preset::Continuous, Preset::Both}) {
      for (const uint64_t seed : {uint64_t{1}, uint64_t{2}}) {
        FrozenRun run;
        run.name = "Reference_" + nameOf(preset) + "_" + std::to_string(static_cast<int>(samplingFrequency)) +
                   "Hz_seed" + std::to_string(seed);
        run.simulated = presetParameters(preset, samplingFrequency);
        run.simulated->seed = seed;
        run.simulated->nrOfChannels = 2;
        run.simulated->seconds = 120;
        // The seeds take turns: the one volume-wise, the other slice-wise.
        run.answers = {{"files", {{"*.ccd", "eeg/run.ccd"}}},
                       {"inOrder", {preset == Preset::Both ? 2 : 1, seed == 1 ? "yes" : "no", 150}}};
        runs.push_back(run);
      }
    }
  }
  return runs;
}

} // namespace emeg::test
