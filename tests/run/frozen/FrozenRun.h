#pragma once

#include "app/simulation/SimulationParameters.h"
#include "app/simulation/Truth.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace emeg::test {

/// A run whose calls and files must stay as they are stored.
struct FrozenRun {
  std::string name;
  /// The recording "eeg/run.ctc" with its CCD and PRT; none when not given.
  std::optional<SimulationParameters> simulated;
  SampleStorage storage;
  /// Changes or adds files of the folder "eeg" (names without the folder) before the run.
  std::function<void(std::map<std::string, std::string>&)> change;
  /// Answers of the stand-in host, which starts in the folder above "eeg".
  nlohmann::json answers;
  /// Options of the general plug-in (GeneralPlugin.cpp); the artifact plug-in runs when not given.
  std::optional<std::string> options;
  /// No file of the host's process grows beyond this size; 0: any.
  uint64_t largestFile = 0;
};

void PrintTo(const FrozenRun& run, std::ostream* out);

/// Runs it in a folder of its own and compares, by Google Test's means, first the hashes of the input, then
/// the calls, then the hashes of all files that are left. Stores them all instead for a renewal.
void expectAsStored(const FrozenRun& run);

/// All runs of a test program.
std::vector<FrozenRun> frozenRuns();

} // namespace emeg::test
