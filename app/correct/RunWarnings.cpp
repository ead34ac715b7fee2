#include "app/correct/RunWarnings.h"

#include "app/correct/MarkerTransfer.h"
#include "app/correct/ScanWarnings.h"

#include <fmt/format.h>

namespace emeg {

namespace {

using Warnings = std::vector<std::string>;

constexpr size_t fewPulses = 20;   // for three components of their shape
constexpr double shortStretch = 3; // seconds without pulse model at the ends that every recording has

double secondsOf(const CorrectionResult& result) {
  return static_cast<double>(result.plan.nrOfTimePoints) / result.header.samplingFrequency;
}

void addPulseWarnings(const CorrectionResult& result, Warnings& warnings) {
  const std::vector<double>& pulses = result.found.pulseTimes;
  if (pulses.size() < fewPulses) {
    const char* const effect = pulses.size() < 3 ? "the heart beat artifact was not removed"
                                                 : "the model of the heart beat artifact is poor";
    warnings.push_back(
        fmt::format("only {} heart beats were found in {:.0f} s: {}. Is there a heart beat artifact? "
                    "Leave out --bcg if not; --channels NAME,... with those that show it best may help.",
                    pulses.size(), secondsOf(result), effect));
  }
  if (result.found.pulseListIsFull)
    warnings.push_back(
        "there are more heart beats than a heart can make: the detection followed something else.");
  for (const Stretch& stretch : unmodelledStretches(pulses, secondsOf(result))) {
    if (stretch.seconds() <= shortStretch) continue;
    warnings.push_back(
        fmt::format("the chain of heart beats does not cover {:.1f} to {:.1f} s: everything below 35 Hz "
                    "was removed there. The stretch is annotated \"{}\": leave it out of the analysis, "
                    "or correct the rest with --interval START:END.",
                    stretch.start, stretch.end, unmodelledMarkerName));
  }
}

} // namespace

Warnings warningsOf(const CorrectionResult& result, const CorrectParameters& parameters) {
  Warnings warnings;
  for (const RepairedChannel& channel : result.repaired) {
    if (channel.nrOfLeft > 0)
      warnings.push_back(
          fmt::format("channel {}: {} saturated samples at its ends have no samples on both sides and "
                      "stay as they are; cut them off with --interval START:END.",
                      result.header.channels[static_cast<size_t>(channel.channel)].name, channel.nrOfLeft));
  }
  if (!looksLikeScan(result)) {
    warnings.push_back(
        "no scanner sequence was found: the gradient artifact, if there is one, was not removed.");
  } else {
    for (std::string& warning : warningsOnScans(result)) warnings.push_back(std::move(warning));
  }
  if (parameters.bcg) addPulseWarnings(result, warnings);
  return warnings;
}

} // namespace emeg
