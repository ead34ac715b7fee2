#include "app/correct/Summary.h"

#include "app/correct/RunWarnings.h"

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
  std::vector<Residual> residuals;
  for (size_t k = 0; k < result.quality->channels.size(); ++k) {
    const auto channel = static_cast<size_t>(result.plan.channels.corrected[k]);
    if (!result.plan.channels.channels[channel].role.showsSequence) continue;
    const ChannelQuality& quality = result.quality->channels[k];
    residuals.push_back(
        {result.header.channels[channel].name, quality.artifactBefore(), quality.artifactAfter()});
  }
  if (residuals.empty()) return;
  std::sort(residuals.begin(), residuals.end(),
            [](const Residual& a, const Residual& b) { return a.after < b.after; });
  const Residual& median = residuals[residuals.size() / 2];
  const Residual& worst = residuals.back();
  fmt::print(out,
             "Gradient:  {:.3g} uV RMS before, {:.3g} uV left in the median channel; most in {}: {:.3g} uV\n",
             median.before, median.after, worst.channel, worst.after);
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
  const MRSequence& sequence = result.found.sequence;
  if (looksLikeScan(result)) {
    fmt::print(out, "Scan:      {} volumes of {} slices, {:.6f} s each, from {:.3f} s on\n",
               sequence.nrOfVolumes, sequence.nrOfSlicesPerVolume, sequence.volumeDuration,
               sequence.firstTriggerTime);
  } else {
    fmt::print(out, "Scan:      none found\n");
  }
  if (result.quality && looksLikeScan(result)) printResidual(out, result);
  if (parameters.bcg)
    fmt::print(out, "Heart:     {} beats, {:.0f} per minute{}\n", result.found.pulseTimes.size(),
               result.found.beatsPerMinute, originOfBeats(result.plan.beats));
  fmt::print(out, "Corrected: {}\n", result.files.back());
}

} // namespace emeg
