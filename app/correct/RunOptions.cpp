#include "app/correct/RunOptions.h"

#include "app/correct/CorrectParameters.h"

#include <vector>

namespace emeg {

namespace {

constexpr const char* files = "Files";
constexpr const char* messages = "Messages";

using enum SettingKind;

std::vector<Setting> makeList() {
  const CorrectParameters defaults;
  return {
      // clang-format off
      {"output", "Output", Text, files, "FILE", "", "beside the input, named after it",
       "Output; its extension chooses the format: .vhdr, .edf, .bdf, .ctc"},
      {"bids", "Bids", Flag, files, "", "", "",
       "IN belongs to a BIDS dataset: write to its derivatives/emeg, with events and channels tables; channel "
       "types come from its channels.tsv"},
      {"force", "Force", Flag, files, "", "", "",
       "Replace existing output files"},
      {"allow-uncorrected", "AllowUncorrected", Flag, files, "", "", "",
       "Write the output even when no scanner sequence was found"},
      {"scratch", "Scratch", Text, files, "FOLDER", "", "the output's",
       "Folder for the temporary file, with room for the samples as 32-bit floats"},
      {"memory", "Memory", Integer, files, "MB", "megabytes", std::to_string(defaults.memory),
       "A recording whose samples need no more than that stays in memory and makes no temporary file", 0, 1e6},
      {"quiet", "Quiet", Flag, messages, "", "", "",
       "No progress and no notes: the summary, warnings and errors"},
      {"verbose", "Verbose", Flag, messages, "", "", "",
       "Also what the search for scans and heart beats compares"},
      {"json", "Json", Flag, messages, "", "", "",
       "Print the content of the sidecar file on the standard output"},
      // clang-format on
  };
}

} // namespace

std::span<const Setting> runOptions() {
  static const std::vector<Setting> list = makeList();
  return list;
}

} // namespace emeg
