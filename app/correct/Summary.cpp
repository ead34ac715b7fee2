#include "app/correct/Summary.h"

#include "app/correct/ScanWarnings.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ostream.h>

namespace emeg {

namespace {

struct Residual {
  std::string channel;
  double before = 0, after = 0;
};

/// The median and the worst of the EEG channels by what is left of the artifact.
void printResidual(std::ostream& out, const CorrectionResult& result) {
  const QualityFigures* const figures = result.qualityOfLongest();
  if (figures == nullptr) return;
  std::vector<Residual> residuals;
  for (size_t k = 0; k < figures->channels.size(); ++k) {
    const auto channel = static_cast<size_t>(result.plan.channels.corrected[k]);
    if (!result.plan.channels.roles[channel].showsSequence) continue;
    const ChannelQuality& quality = figures->channels[k];
    residuals.push_back(
        {result.header.channels[channel].name, quality.artifactBefore(), quality.artifactAfter()});
  }
  if (residuals.empty()) return;
  std::sort(residuals.begin(), residuals.end(),
            [](const Residual& a, const Residual& b) { return a.after < b.after; });
  const Residual& median = residuals[residuals.size() / 2];
  const Residual& worst = residuals.back();
  const FoundScans& timing = result.found.timing;
  const std::string where =
      timing.scans.size() > 1 ? fmt::format("scan {}, the longest: ", timing.indexOfLongest() + 1) : "";
  fmt::print(
      out, "Gradient:  {}{:.3g} uV RMS before, {:.3g} uV left in the median channel; most in {}: {:.3g} uV\n",
      where, median.before, median.after, worst.channel, worst.after);
}

const char* waysOf(TimingSource source) {
  switch (source) {
  case TimingSource::QuietBetweenSlices:
    return "found by the quiet between slices";
  case TimingSource::SimilarVolumes:
    return "found by the similarity of volumes";
  case TimingSource::VolumeMarkers:
    return "from the volume markers";
  case TimingSource::SliceMarkers:
    return "from the slice markers";
  case TimingSource::GivenTiming:
    return "from the given TR";
  case TimingSource::None:
    break;
  }
  return "none";
}

void printScans(std::ostream& out, const CorrectionResult& result) {
  const FoundScans& timing = result.found.timing;
  if (!result.found.hasSequence()) {
    fmt::print(out, "Scan:      none found\n");
    return;
  }
  for (size_t i = 0; i < timing.scans.size(); ++i) {
    const FoundScan& scan = timing.scans[i];
    const std::string label = timing.scans.size() > 1 ? fmt::format("Scan {}:", i + 1) : "Scan:";
    fmt::print(out, "{:<10} {} volumes of {} slices, {:.6f} s each, from {:.3f} s on{}\n", label,
               scan.sequence.nrOfVolumes, scan.sequence.nrOfSlicesPerVolume, scan.sequence.volumeDuration,
               scan.sequence.firstTriggerTime,
               scan.partsBefore + scan.partsBehind > 0 ? ", and parts of volumes at its ends" : "");
  }
  fmt::print(out, "Timing:    {}{}\n", waysOf(timing.source),
             timing.longest().isCountIdentifiable ? "" : "; slices are all alike, counts are a choice");
}

std::string originOfBeats(const BeatRequest& request) {
  switch (request.source) {
  case BeatSource::Markers:
    return fmt::format(", from the markers {}", request.name);
  case BeatSource::Ecg:
    return fmt::format(", R peaks of {}", request.name);
  case BeatSource::Blind:
    break;
  }
  return "";
}

} // namespace

void printSummary(std::ostream& out, const CorrectionResult& result, const CorrectParameters& parameters) {
  printScans(out, result);
  if (result.found.hasSequence()) printResidual(out, result);
  if (parameters.bcg)
    fmt::print(out, "Heart:     {} beats, {:.0f} per minute{}\n", result.found.pulseTimes.size(),
               result.found.beatsPerMinute, originOfBeats(result.plan.settings.beats));
  fmt::print(out, "Corrected: {}\n", result.files.back());
}

} // namespace emeg
