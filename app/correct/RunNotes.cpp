#include "app/correct/RunNotes.h"

#include "app/correct/KnownBeats.h"
#include "app/correct/ScanWarnings.h"

#include <fmt/format.h>

namespace emeg {

namespace {

void requireScan(const CorrectionResult& result, const CorrectParameters& parameters) {
  if (result.found.hasSequence() || parameters.allowUncorrected) return;
  if (!result.plan.settings.timing.isBlind())
    throw FailedRun(fmt::format(
        "nothing in \"{}\" repeats with the timing that was given, so nothing was written. Are they "
        "the scanner's markers, is the TR in seconds? Without these options the timing is looked "
        "for in the EEG; --allow-uncorrected writes the output all the same.",
        parameters.input));
  throw FailedRun(fmt::format(
      "no scanner sequence was found in \"{}\", so nothing was written. Is it a recording "
      "with the scanner running, for three volumes at least? --interval START:END chooses the part "
      "with the scan, --channels NAME,... channels that show it; --volume-markers NAME or --tr "
      "SECONDS --slices N tell its timing; --allow-uncorrected writes the output all the same.",
      parameters.input));
}

} // namespace

std::vector<std::string> notesBefore(const CorrectionResult& planned, const CorrectParameters& parameters) {
  std::vector<std::string> notes = planned.header.warnings;
  const CorrectionPlan& plan = planned.plan;
  for (const double hz : parameters.asPlugin ? parameters.lineNoise : std::vector<double>())
    notes.push_back(
        fmt::format("--line-noise {:g} subtracts one sinusoid of constant amplitude and phase per "
                    "channel; what changes during the recording stays.",
                    hz));
  if (plan.samplesPerOutput > 1 && !plan.channels.changesAll())
    notes.push_back(
        fmt::format("of trigger and status channels one sample in {:g} is kept: shorter pulses get "
                    "lost there. Markers keep their times.",
                    plan.samplesPerOutput));
  return notes;
}

void checkWhatWasFound(const CorrectionResult& result, const CorrectParameters& parameters) {
  requireScan(result, parameters);
  if (!parameters.bcg) return;
  const std::string problem = problemWithKnownBeats(result.plan.settings.beats, result.found.knownPulses);
  if (!problem.empty()) throw FailedRun(problem);
}

std::vector<std::string> notesOn(const CorrectionResult& result) {
  return notesOnTiming(result.found.timing);
}

} // namespace emeg
