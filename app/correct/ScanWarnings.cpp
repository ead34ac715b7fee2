#include "app/correct/ScanWarnings.h"

#include "engine/figures/ScanDoubts.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace emeg {

namespace {

using enum ScanDoubtKind;

constexpr size_t mostNames = 8;

bool hasMarkers(const CorrectionResult& result) {
  return result.plan.settings.timing.markerKind.has_value();
}

/// Names of the channels that a doubt is about.
std::string channelsOf(const ScanDoubt& doubt, const CorrectionResult& result) {
  std::vector<std::string> names;
  for (const size_t k : doubt.channels)
    names.push_back(result.header.channels[static_cast<size_t>(result.plan.channels.corrected[k])].name);
  return listOf(names);
}

/// A doubt about the scans together.
std::string sentenceOnAll(const ScanDoubt& doubt, const CorrectionResult& result) {
  if (doubt.kind == SlicesDoNotRepeat)
    return fmt::format(
        "the slices differ from each other: averaging them would leave {:.1f} dB more than averaging "
        "whole volumes. Volumes were averaged, as with --volume-wise.",
        doubt.measured);
  return fmt::format("volumes of the timing that was given have only {:.0f} % of their power "
                     "in common: is it the scanner's? "
                     "Without {} the timing is looked for in the EEG.",
                     100 * (1 - doubt.measured), hasMarkers(result) ? "the markers" : "--tr");
}

std::string sentenceOnTiming(const ScanDoubt& doubt, const CorrectionResult& result) {
  const MRSequence& sequence = result.found.timing.scans[doubt.scan].sequence;
  switch (doubt.kind) {
  case BeyondRecording:
    return fmt::format("the {} volumes of {:.4f} s that were found would last from {:.1f} to {:.1f} s, but "
                       "the recording ends at {:.1f} s: the timing is wrong. Choose the part with the "
                       "scan alone with --interval START:END, or give its timing with --volume-markers NAME "
                       "or --tr SECONDS --slices N.",
                       sequence.nrOfVolumes, sequence.volumeDuration, doubt.where.start, doubt.where.end,
                       result.seconds());
  case SlicesNotTaken:
    return fmt::format(
        "{:.0f} slices per volume do not fit volumes of {:.4f} s; {} were taken. Is --slices right?",
        doubt.measured, sequence.volumeDuration, sequence.nrOfSlicesPerVolume);
  case LongSlices:
    return fmt::format("the markers come every {:.3f} s, which is long for a slice. If there is one "
                       "per volume, use --volume-markers.",
                       doubt.measured);
  default: // TooFewVolumes
    return fmt::format("only {:.0f} volumes were found: too few for templates that average the EEG away, and "
                       "to measure what is left. Give a longer part of the scan{}.",
                       doubt.measured, result.volumeWise() ? ", or try --slice-wise" : "");
  }
}

std::string sentenceOnFigures(const ScanDoubt& doubt, const CorrectionResult& result) {
  switch (doubt.kind) {
  case Drift:
    return fmt::format("the volume duration drifts: in a part of the scan volumes come {:.2f} ms {} than "
                       "the duration that was found says. Was the amplifier synchronised with the scanner's "
                       "clock? A smaller --window follows drifts better; --interval START:END corrects a "
                       "part alone.",
                       1000 * std::abs(doubt.measured), doubt.measured > 0 ? "later" : "earlier");
  case ScanOutside:
    return fmt::format("about {:.0f} s outside the {} volumes that were found look like scan and were not "
                       "corrected. {} one scan at a time with --interval START:END.",
                       doubt.measured, result.found.timing.scans[doubt.scan].sequence.nrOfVolumes,
                       hasMarkers(result)
                           ? "Are markers missing there? Choose"
                           : "Give the scanner's markers with --volume-markers NAME, or choose");
  case ArtifactGrew:
    return fmt::format("the artifact is larger than before in {}. Try --slice-wise or --volume-wise (the "
                       "other one), a smaller --window, or an --interval that holds the scan alone.",
                       channelsOf(doubt, result));
  default: // ArtifactStayed
    return fmt::format("the power at the slice and volume frequencies was not reduced in {}. Look for "
                       "movements or saturated samples there (--repair-saturation), or try a smaller "
                       "--window.",
                       channelsOf(doubt, result));
  }
}

std::string sentenceOn(const ScanDoubt& doubt, const CorrectionResult& result) {
  if (doubt.kind == SlicesDoNotRepeat || doubt.kind == VolumesUnlike) return sentenceOnAll(doubt, result);
  const bool isOnTiming = doubt.kind == BeyondRecording || doubt.kind == SlicesNotTaken ||
                          doubt.kind == LongSlices || doubt.kind == TooFewVolumes;
  const std::string sentence =
      isOnTiming ? sentenceOnTiming(doubt, result) : sentenceOnFigures(doubt, result);
  const bool isOfOneScan = result.found.timing.scans.size() > 1 && doubt.kind != ScanOutside;
  return isOfOneScan ? fmt::format("scan {}: {}", doubt.scan + 1, sentence) : sentence;
}

} // namespace

/// "Fp1, Fp2, F3 and 5 more".
std::string listOf(const std::vector<std::string>& names) {
  const size_t shown = std::min(names.size(), mostNames);
  std::string text =
      fmt::format("{}", fmt::join(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(shown), ", "));
  if (names.size() > shown) text += fmt::format(" and {} more", names.size() - shown);
  return text;
}

std::vector<std::string> notesOnTiming(const FoundScans& timing) {
  std::vector<std::string> notes;
  if (timing.source == TimingSource::SimilarVolumes && !timing.doubt.empty())
    notes.push_back(fmt::format(
        "the quiet between one channel's slices does not tell the scan's timing ({}): it was found "
        "by the similarity of volumes.",
        timing.doubt));
  const bool isChoice = std::any_of(timing.scans.begin(), timing.scans.end(),
                                    [](const FoundScan& scan) { return !scan.isCountIdentifiable; });
  if (isChoice)
    notes.push_back(
        "all slices are alike and equally far apart: nothing tells where a volume begins or how many "
        "slices it has. The counts are a choice under which the correction works; give them with "
        "--tr SECONDS --slices N --first SECONDS, or --volume-markers NAME, if they matter.");
  return notes;
}

std::vector<std::string> warningsOnScans(const CorrectionResult& result) {
  std::vector<std::string> warnings;
  const RecordingShape shape = result.plan.shapeOf(result.header);
  for (const ScanDoubt& doubt : doubtsAboutScans(result.found, result.plan.settings.timing, shape))
    warnings.push_back(sentenceOn(doubt, result));
  return warnings;
}

} // namespace emeg
