#include "app/correct/BeatWarnings.h"

#include "app/correct/MarkerTransfer.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace emeg {

namespace {

using Warnings = std::vector<std::string>;

constexpr size_t fewPulses = 20;    // for three components of their shape
constexpr double shortStretch = 3;  // seconds without pulse model at the ends that every recording has
constexpr double manyFilled = 0.1;  // of the beats
constexpr double manyRefused = 0.1; // of the beats

// Healthy hearts stay far from all of these: docs/heart-beats.md has the measurements.
constexpr double contradiction = 0.1; // relative difference of two rates that should be one
constexpr double fastestHeart = 138;  // beats per minute; the search ends at 140 and 35
constexpr double slowestHeart = 36;
constexpr double manyOffIntervals = 0.02; // of the intervals
constexpr double littleInCommon = 0.35;   // of the energy
constexpr double nothingInCommon = 0.05;  // the same, of beats that are known
constexpr double manyUnlike = 0.05;       // of the beats

bool contradict(double a, double b) {
  return std::abs(std::log(a / b)) > std::log(1 + contradiction);
}

/// What to do about beats that were found in the EEG and may be wrong.
std::string remedyFor(const CorrectionResult& result) {
  const auto ecg =
      std::find_if(result.header.channels.begin(), result.header.channels.end(),
                   [](const RecordingChannel& channel) { return channel.kind == ChannelKind::Ecg; });
  if (ecg != result.header.channels.end())
    return fmt::format("Use --ecg {}, which takes them from the R peaks of that channel.", ecg->name);
  return "Use --ecg CHANNEL or --pulse-markers NAME if the recording has an electrocardiogram or markers of "
         "the beats; otherwise leave movements out with --interval START:END.";
}

/// The same behind another sentence; empty when the beats were not searched for.
std::string remedyForSearch(const CorrectionResult& result) {
  const bool isBlind = result.plan.settings.beats.source == BeatSource::Blind;
  return isBlind ? fmt::format(" {}", remedyFor(result)) : std::string();
}

/// What the beats of markers or an electrocardiogram lacked.
void addKnownBeatWarnings(const CorrectionResult& result, Warnings& warnings) {
  const BeatRequest& request = result.plan.settings.beats;
  if (request.source == BeatSource::Blind) return;
  const std::string origin = request.source == BeatSource::Ecg
                                 ? fmt::format("channel {}", request.name)
                                 : fmt::format("the markers \"{}\"", request.name);
  const KnownPulses& pulses = result.found.knownPulses;
  int64_t nrOfFilled = 0;
  for (const FilledGap& gap : pulses.gaps) nrOfFilled += gap.nrOfBeats;
  const auto nrOfBeats = static_cast<double>(pulses.positions.size());
  if (static_cast<double>(nrOfFilled) > manyFilled * nrOfBeats)
    warnings.push_back(
        fmt::format("{} of the {} heart beats are guesses in gaps of {}: much of the artifact may be left. "
                    "Look at it, or leave the option out to have the beats found in the EEG.",
                    nrOfFilled, pulses.positions.size(), origin));
  for (const Stretch& stretch : guessedStretches(result.found))
    warnings.push_back(
        fmt::format("there are no heart beats in {} from {:.1f} to {:.1f} s: their places were guessed, and "
                    "the stretch is annotated \"{}\".",
                    origin, stretch.start, stretch.end, guessedMarkerName));
  const int64_t nrOfRefused = pulses.nrOfDoubled + pulses.nrOfStray;
  if (static_cast<double>(nrOfRefused) > manyRefused * nrOfBeats)
    warnings.push_back(
        fmt::format("{} of {} come closer than heart beats do, or between them, and were left out. Are they "
                    "heart beats?",
                    nrOfRefused, origin));
  if (result.found.plausibility && result.found.plausibility->commonShare < nothingInCommon)
    warnings.push_back(fmt::format(
        "hardly anything in the EEG goes with the heart beats of {} ({:.0f} % of the energy around "
        "them): are they heart beats, of this recording?",
        origin, 100 * result.found.plausibility->commonShare));
}

void addSearchWarnings(const CorrectionResult& result, Warnings& warnings) {
  if (result.plan.settings.beats.source != BeatSource::Blind) return;
  const std::vector<std::string> doubts = doubtsAboutBeats(result.found);
  if (doubts.empty()) return;
  warnings.push_back(fmt::format("the heart beats that were found in the EEG may be wrong: {}. {}",
                                 fmt::join(doubts, "; "), remedyFor(result)));
}

void addCoverageWarnings(const CorrectionResult& result, Warnings& warnings) {
  const std::string remedy = remedyForSearch(result);
  const char* const effect = result.plan.settings.method.removesOutsideBeats
                                 ? "everything below 35 Hz was removed there"
                                 : "the heart beat artifact, if there is one, is left there";
  for (const Stretch& stretch : result.found.withoutModel) {
    if (stretch.seconds() <= shortStretch) continue;
    warnings.push_back(fmt::format(
        "the chain of heart beats does not cover {:.1f} to {:.1f} s: {}. The stretch is annotated "
        "\"{}\": leave it out of the analysis, or correct the rest with --interval START:END.{}",
        stretch.start, stretch.end, effect, unmodelledMarkerName, remedy));
  }
}

} // namespace

std::vector<std::string> doubtsAboutBeats(const Findings& found) {
  constexpr size_t fewestPulses = 3;
  std::vector<std::string> doubts;
  if (found.pulseTimes.size() < fewestPulses || !found.plausibility) return doubts;
  const PulsePlausibility& pulses = *found.plausibility;
  const double beatsPerMinute = found.beatsPerMinute;
  const auto rateOf = [&](double interval) { return 60 * found.pulseSampleRate / interval; };
  if (beatsPerMinute < slowestHeart || beatsPerMinute > fastestHeart)
    doubts.push_back(fmt::format("{:.0f} beats per minute are at the limit of the search", beatsPerMinute));
  if (pulses.commonPeriod > 0 && contradict(rateOf(pulses.commonPeriod), beatsPerMinute))
    doubts.push_back(
        fmt::format("one stretch, such as a movement, made the period {:.0f} per minute, and most "
                    "of the recording shows {:.0f}",
                    beatsPerMinute, rateOf(pulses.commonPeriod)));
  if (contradict(rateOf(pulses.meanInterval), beatsPerMinute))
    doubts.push_back(fmt::format("they come {:.0f} times a minute, and the period was {:.0f}",
                                 rateOf(pulses.meanInterval), beatsPerMinute));
  if (pulses.offIntervals > manyOffIntervals)
    doubts.push_back(fmt::format("{:.0f} % of the intervals differ by more than a third from the usual one, "
                                 "the first at {:.1f} s",
                                 100 * pulses.offIntervals, pulses.firstOff / found.pulseSampleRate));
  if (pulses.commonShare < littleInCommon)
    doubts.push_back(
        fmt::format("there is hardly an artifact that they have in common ({:.0f} % of the energy "
                    "around them)",
                    100 * pulses.commonShare));
  if (pulses.unlikePulses > manyUnlike)
    doubts.push_back(
        fmt::format("around {:.0f} % of them the EEG does not look as around the others: movements, "
                    "or beats that come early",
                    100 * pulses.unlikePulses));
  return doubts;
}

Warnings beatWarningsOf(const CorrectionResult& result) {
  Warnings warnings;
  const std::vector<double>& pulses = result.found.pulseTimes;
  if (pulses.size() < fewPulses) {
    const char* const effect = pulses.size() < 3 ? "the heart beat artifact was not removed"
                                                 : "the model of the heart beat artifact is poor";
    warnings.push_back(
        fmt::format("only {} heart beats were found in {:.0f} s: {}. Is there a heart beat artifact? "
                    "Leave out --bcg if not; --channels NAME,... with those that show it best may help.{}",
                    pulses.size(), result.seconds(), effect, remedyForSearch(result)));
  }
  if (result.found.pulseListIsFull)
    warnings.push_back(
        "there are more heart beats than a heart can make: the detection followed something else.");
  addSearchWarnings(result, warnings);
  addKnownBeatWarnings(result, warnings);
  addCoverageWarnings(result, warnings);
  return warnings;
}

} // namespace emeg
