#include "app/correct/RunWarnings.h"

#include "app/correct/BeatWarnings.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace emeg {

namespace {

using Warnings = std::vector<std::string>;

constexpr double scanLineToBackground = 10;
constexpr double notReducedRemaining = 0.5; // of the artifact's amplitude
constexpr double noticeableDrift = 0.0002;  // seconds
constexpr size_t mostNames = 8;

/// "Fp1, Fp2, F3 and 5 more".
std::string listOf(const std::vector<std::string>& names) {
  const size_t shown = std::min(names.size(), mostNames);
  std::string text =
      fmt::format("{}", fmt::join(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(shown), ", "));
  if (names.size() > shown) text += fmt::format(" and {} more", names.size() - shown);
  return text;
}

double secondsOf(const CorrectionResult& result) {
  return static_cast<double>(result.plan.nrOfTimePoints) / result.header.samplingFrequency;
}

/// Names of the corrected channels whose figures fulfil a condition.
template <typename Condition>
std::vector<std::string> channelsWith(const CorrectionResult& result, const Condition& condition) {
  std::vector<std::string> names;
  for (size_t k = 0; k < result.quality->channels.size(); ++k)
    if (condition(result.quality->channels[k]))
      names.push_back(result.header.channels[static_cast<size_t>(result.plan.channels.corrected[k])].name);
  return names;
}

void addSequenceWarnings(const CorrectionResult& result, Warnings& warnings) {
  const MRSequence& sequence = result.found.sequence;
  const double seconds = secondsOf(result);
  const double end = sequence.firstTriggerTime + sequence.nrOfVolumes * sequence.volumeDuration;
  if (end > seconds + sequence.volumeDuration || sequence.firstTriggerTime < -sequence.volumeDuration)
    warnings.push_back(
        fmt::format("the {} volumes of {:.4f} s that were found would last from {:.1f} to {:.1f} s, but "
                    "the recording ends at {:.1f} s: the timing is wrong. Choose the part with the "
                    "scan alone with --interval START:END.",
                    sequence.nrOfVolumes, sequence.volumeDuration, sequence.firstTriggerTime, end, seconds));
  if (!result.quality) {
    warnings.push_back(
        fmt::format("only {} volumes were found: too few for templates that average the EEG away, and to "
                    "measure what is left. Give a longer part of the scan.",
                    sequence.nrOfVolumes));
    return;
  }
  const double drift = result.quality->drift;
  if (std::abs(drift) > std::max(noticeableDrift, 0.5 / result.header.samplingFrequency))
    warnings.push_back(
        fmt::format("the volume duration drifts: in a part of the scan volumes come {:.2f} ms {} than "
                    "the duration that was found says. Was the amplifier synchronised with the scanner's "
                    "clock? A smaller --window follows drifts better; --interval START:END corrects a "
                    "part alone.",
                    1000 * std::abs(drift), drift > 0 ? "later" : "earlier"));
  if (result.quality->artifactSecondsOutside > 0)
    warnings.push_back(
        fmt::format("about {:.0f} s outside the {} volumes that were found look like scan and were not "
                    "corrected. Choose one scan at a time with --interval START:END.",
                    result.quality->artifactSecondsOutside, sequence.nrOfVolumes));
}

void addResidualWarnings(const CorrectionResult& result, Warnings& warnings) {
  const auto grew = channelsWith(
      result, [](const ChannelQuality& channel) { return channel.isVisible() && channel.remaining() > 1; });
  const auto stayed = channelsWith(result, [](const ChannelQuality& channel) {
    return channel.isVisible() && channel.remaining() > notReducedRemaining && channel.remaining() <= 1;
  });
  if (!grew.empty())
    warnings.push_back(
        fmt::format("the artifact is larger than before in {}. Try --slice-wise or --volume-wise (the "
                    "other one), a smaller --window, or an --interval that holds the scan alone.",
                    listOf(grew)));
  if (!stayed.empty())
    warnings.push_back(
        fmt::format("the power at the slice and volume frequencies was not reduced in {}. Look for "
                    "movements or saturated samples there (--repair-saturation), or try a smaller "
                    "--window.",
                    listOf(stayed)));
}

} // namespace

bool looksLikeScan(const CorrectionResult& result) {
  if (!result.found.hasSequence()) return false;
  if (!result.quality) return true;
  return std::any_of(result.quality->channels.begin(), result.quality->channels.end(),
                     [](const ChannelQuality& channel) {
                       return channel.before.medianSliceToBackground > scanLineToBackground;
                     });
}

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
    addSequenceWarnings(result, warnings);
    if (result.quality) addResidualWarnings(result, warnings);
  }
  if (parameters.bcg)
    for (std::string& warning : beatWarningsOf(result)) warnings.push_back(std::move(warning));
  return warnings;
}

} // namespace emeg
