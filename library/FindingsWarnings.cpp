#include "library/FindingsWarnings.h"

#include <cstdint>

namespace emeg {

namespace {

using Warnings = std::vector<FindingsWarning>;

void warnOfSamples(const emeg_correction& correction, const Findings& found, Warnings& warnings) {
  if (found.nrOfNotFinite > 0)
    warnings.push_back(
        {"NotFinite", std::to_string(found.nrOfNotFinite) + " samples are not finite and count as 0."});
  for (const RepairedChannel& channel : found.repaired)
    if (channel.nrOfLeft > 0)
      warnings.push_back({"SaturationLeft", std::to_string(channel.nrOfLeft) +
                                                " saturated samples of channel " +
                                                correction.names.at(static_cast<size_t>(channel.channel)) +
                                                " lie at its ends and stay."});
}

void warnOfScans(const emeg_correction& correction, const Findings& found, Warnings& warnings) {
  if (!correction.settings.gradient) return;
  if (!found.hasSequence())
    warnings.push_back({"NoScan", "No scan was found: the gradient artifact, if there is one, stays."});
  if (found.timing.slicesDoNotRepeat)
    warnings.push_back({"SlicesDoNotRepeat", "Slices do not repeat: volumes were averaged instead."});
  for (const FoundScan& scan : found.timing.scans)
    if (!scan.isCountIdentifiable)
      warnings.push_back({"CountsAreAChoice",
                          "All slices of a scan are alike: how many there are in a volume, "
                          "and where volumes begin, is a choice."});
}

void warnOfBeats(const emeg_correction& correction, const Findings& found, Warnings& warnings) {
  if (!correction.settings.heartBeats) return;
  if (found.pulseTimes.empty())
    warnings.push_back({"NoBeats", "No heart beats were found: their artifact stays."});
  int64_t nrOfGuessed = 0;
  for (const FilledGap& gap : found.knownPulses.gaps) nrOfGuessed += gap.nrOfBeats;
  if (nrOfGuessed > 0)
    warnings.push_back(
        {"BeatsGuessed",
         std::to_string(nrOfGuessed) + " heart beats are missing between the known ones and were guessed."});
  double seconds = 0;
  for (const Stretch& stretch : found.withoutModel) seconds += stretch.seconds();
  if (seconds > 0)
    warnings.push_back({"WithoutModel", "For " + std::to_string(seconds) +
                                            " seconds there is no model of the heart beats: their artifact "
                                            "stays there."});
  if (found.pulseListIsFull)
    warnings.push_back({"BeatListFull", "There are more heart beats than the plug-in's method keeps."});
}

} // namespace

std::vector<FindingsWarning> warningsOf(const emeg_correction& correction) {
  const Findings& found = correction.findings();
  Warnings warnings;
  warnOfSamples(correction, found, warnings);
  warnOfScans(correction, found, warnings);
  warnOfBeats(correction, found, warnings);
  return warnings;
}

} // namespace emeg
