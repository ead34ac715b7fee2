#include "app/correct/RunWarnings.h"

#include "app/correct/BeatWarnings.h"
#include "app/correct/ScanWarnings.h"

#include <fmt/format.h>

namespace emeg {

std::vector<std::string> warningsOf(const CorrectionResult& result, const CorrectParameters& parameters) {
  std::vector<std::string> warnings;
  if (result.found.nrOfNotFinite > 0)
    warnings.push_back(
        fmt::format("{} samples are no numbers and were taken as 0: look at the recording there.",
                    result.found.nrOfNotFinite));
  for (const RepairedChannel& channel : result.found.repaired) {
    if (channel.nrOfLeft > 0)
      warnings.push_back(
          fmt::format("channel {}: {} saturated samples at its ends have no samples on both sides and "
                      "stay as they are; cut them off with --interval START:END.",
                      result.header.channels[static_cast<size_t>(channel.channel)].name, channel.nrOfLeft));
  }
  if (!result.found.hasSequence()) {
    warnings.push_back(
        "no scanner sequence was found: the gradient artifact, if there is one, was not removed.");
  } else {
    for (std::string& warning : warningsOnScans(result)) warnings.push_back(std::move(warning));
  }
  if (parameters.bcg)
    for (std::string& warning : beatWarningsOf(result)) warnings.push_back(std::move(warning));
  return warnings;
}

} // namespace emeg
