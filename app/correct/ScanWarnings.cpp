#include "app/correct/ScanWarnings.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace emeg {

namespace {

using Warnings = std::vector<std::string>;

constexpr double notReducedRemaining = 0.5; // of the artifact's amplitude
constexpr double noticeableDrift = 0.0002;  // seconds
constexpr double longestSlice = 0.5;        // seconds
constexpr double hardlyAlike = 0.45;        // of a volume's power, sharpened; scans of 40 uV stay below 0.4
constexpr int32_t fewestMeasuredVolumes = 4;
constexpr size_t mostNames = 8;

/// One scan of a result with its figures.
struct MeasuredScan {
  const CorrectionResult& result;
  const FoundScan& scan;
  const QualityFigures* quality; ///< null: too short to tell, or not measured
  std::string name;              ///< "scan 2: ", empty where there is only one
};

bool hasMarkers(const CorrectionResult& result) {
  return result.plan.settings.timing.markerKind.has_value();
}

/// Names of the corrected channels whose figures fulfil a condition.
template <typename Condition>
std::vector<std::string> channelsWith(const MeasuredScan& scan, const Condition& condition) {
  std::vector<std::string> names;
  const CorrectionResult& result = scan.result;
  for (size_t k = 0; k < scan.quality->channels.size(); ++k)
    if (condition(scan.quality->channels[k]))
      names.push_back(result.header.channels[static_cast<size_t>(result.plan.channels.corrected[k])].name);
  return names;
}

void addLengthWarning(const MeasuredScan& measured, Warnings& warnings) {
  const MRSequence& sequence = measured.scan.sequence;
  const double seconds = measured.result.seconds();
  const double end = sequence.firstTriggerTime + sequence.nrOfVolumes * sequence.volumeDuration;
  if (end > seconds + sequence.volumeDuration || sequence.firstTriggerTime < -sequence.volumeDuration)
    warnings.push_back(
        fmt::format("{}the {} volumes of {:.4f} s that were found would last from {:.1f} to {:.1f} s, but "
                    "the recording ends at {:.1f} s: the timing is wrong. Choose the part with the "
                    "scan alone with --interval START:END, or give its timing with --volume-markers NAME "
                    "or --tr SECONDS --slices N.",
                    measured.name, sequence.nrOfVolumes, sequence.volumeDuration, sequence.firstTriggerTime,
                    end, seconds));
}

/// What was said about the scan's timing and does not go with it.
void addGivenTimingWarnings(const MeasuredScan& measured, Warnings& warnings) {
  const MRSequence& sequence = measured.scan.sequence;
  const int32_t given = measured.result.plan.settings.timing.given.nrOfSlicesPerVolume;
  if (given > 0 && given != sequence.nrOfSlicesPerVolume)
    warnings.push_back(fmt::format(
        "{}{} slices per volume do not fit volumes of {:.4f} s; {} were taken. Is --slices right?",
        measured.name, given, sequence.volumeDuration, sequence.nrOfSlicesPerVolume));
  if (measured.result.found.timing.source == TimingSource::SliceMarkers &&
      sequence.sliceDuration > longestSlice)
    warnings.push_back(
        fmt::format("{}the markers come every {:.3f} s, which is long for a slice. If there is one "
                    "per volume, use --volume-markers.",
                    measured.name, sequence.sliceDuration));
}

void addTimingWarnings(const MeasuredScan& measured, Warnings& warnings) {
  const MRSequence& sequence = measured.scan.sequence;
  if (!measured.quality) {
    if (sequence.nrOfVolumes >= fewestMeasuredVolumes) return;
    warnings.push_back(fmt::format(
        "{}only {} volumes were found: too few for templates that average the EEG away, and to "
        "measure what is left. Give a longer part of the scan{}.",
        measured.name, sequence.nrOfVolumes, measured.result.volumeWise() ? ", or try --slice-wise" : ""));
    return;
  }
  const double drift = measured.quality->drift;
  if (std::abs(drift) > std::max(noticeableDrift, 0.5 / measured.result.header.samplingFrequency))
    warnings.push_back(
        fmt::format("{}the volume duration drifts: in a part of the scan volumes come {:.2f} ms {} than "
                    "the duration that was found says. Was the amplifier synchronised with the scanner's "
                    "clock? A smaller --window follows drifts better; --interval START:END corrects a "
                    "part alone.",
                    measured.name, 1000 * std::abs(drift), drift > 0 ? "later" : "earlier"));
  if (measured.quality->artifactSecondsOutside > 0)
    warnings.push_back(fmt::format(
        "about {:.0f} s outside the {} volumes that were found look like scan and were not "
        "corrected. {} one scan at a time with --interval START:END.",
        measured.quality->artifactSecondsOutside, sequence.nrOfVolumes,
        hasMarkers(measured.result) ? "Are markers missing there? Choose"
                                    : "Give the scanner's markers with --volume-markers NAME, or choose"));
}

void addResidualWarnings(const MeasuredScan& measured, Warnings& warnings) {
  if (!measured.quality) return;
  const auto grew = channelsWith(
      measured, [](const ChannelQuality& channel) { return channel.isVisible() && channel.remaining() > 1; });
  const auto stayed = channelsWith(measured, [](const ChannelQuality& channel) {
    return channel.isVisible() && channel.remaining() > notReducedRemaining && channel.remaining() <= 1;
  });
  if (!grew.empty())
    warnings.push_back(
        fmt::format("{}the artifact is larger than before in {}. Try --slice-wise or --volume-wise (the "
                    "other one), a smaller --window, or an --interval that holds the scan alone.",
                    measured.name, listOf(grew)));
  if (!stayed.empty())
    warnings.push_back(
        fmt::format("{}the power at the slice and volume frequencies was not reduced in {}. Look for "
                    "movements or saturated samples there (--repair-saturation), or try a smaller "
                    "--window.",
                    measured.name, listOf(stayed)));
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

Warnings warningsOnScans(const CorrectionResult& result) {
  const FoundScans& timing = result.found.timing;
  Warnings warnings;
  if (timing.slicesDoNotRepeat)
    warnings.push_back(fmt::format(
        "the slices differ from each other: averaging them would leave {:.1f} dB more than averaging "
        "whole volumes. Volumes were averaged, as with --volume-wise.",
        timing.slicesLeaveDb));
  if (!result.plan.settings.timing.isBlind() && timing.evidence.unlikeVolumes > hardlyAlike)
    warnings.push_back(fmt::format("volumes of the timing that was given have only {:.0f} % of their power "
                                   "in common: is it the scanner's? "
                                   "Without {} the timing is looked for in the EEG.",
                                   100 * (1 - timing.evidence.unlikeVolumes),
                                   hasMarkers(result) ? "the markers" : "--tr"));
  for (size_t i = 0; i < timing.scans.size(); ++i) {
    const QualityFigures* const quality =
        i < result.found.quality.size() && result.found.quality[i] ? &*result.found.quality[i] : nullptr;
    const MeasuredScan measured{result, timing.scans[i], quality,
                                timing.scans.size() > 1 ? fmt::format("scan {}: ", i + 1) : ""};
    addLengthWarning(measured, warnings);
    addGivenTimingWarnings(measured, warnings);
    // What lies outside is outside of all scans.
    if (i == timing.indexOfLongest() || quality == nullptr) addTimingWarnings(measured, warnings);
    addResidualWarnings(measured, warnings);
  }
  return warnings;
}

} // namespace emeg
