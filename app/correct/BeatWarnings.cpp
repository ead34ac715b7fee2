#include "app/correct/BeatWarnings.h"

#include "app/correct/MarkerTransfer.h"
#include "engine/beats/BeatDoubts.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace emeg {

namespace {

using enum BeatDoubtKind;

bool isBlind(const CorrectionResult& result) {
  return result.plan.settings.beats.source == BeatSource::Blind;
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
  return isBlind(result) ? fmt::format(" {}", remedyFor(result)) : std::string();
}

/// Where known beats come from.
std::string originOf(const CorrectionResult& result) {
  const BeatRequest& request = result.plan.settings.beats;
  return request.source == BeatSource::Ecg ? fmt::format("channel {}", request.name)
                                           : fmt::format("the markers \"{}\"", request.name);
}

/// A doubt about the search, as part of a sentence; empty for the other kinds.
std::string partOfSentence(const BeatDoubt& doubt) {
  switch (doubt.kind) {
  case AtLimitOfSearch:
    return fmt::format("{:.0f} beats per minute are at the limit of the search", doubt.measured);
  case PeriodOfOneStretch:
    return fmt::format("one stretch, such as a movement, made the period {:.0f} per minute, and most "
                       "of the recording shows {:.0f}",
                       doubt.measured, doubt.expected);
  case IntervalsContradictPeriod:
    return fmt::format("they come {:.0f} times a minute, and the period was {:.0f}", doubt.measured,
                       doubt.expected);
  case OffIntervals:
    return fmt::format("{:.0f} % of the intervals differ by more than a third from the usual one, "
                       "the first at {:.1f} s",
                       100 * doubt.measured, doubt.where.start);
  case LittleInCommon:
    return fmt::format("there is hardly an artifact that they have in common ({:.0f} % of the energy "
                       "around them)",
                       100 * doubt.measured);
  case UnlikeBeats:
    return fmt::format("around {:.0f} % of them the EEG does not look as around the others: movements, "
                       "or beats that come early",
                       100 * doubt.measured);
  default:
    return {};
  }
}

std::string sentenceOnCount(const BeatDoubt& doubt, const CorrectionResult& result) {
  const char* const effect = doubt.kind == TooFewBeats ? "the heart beat artifact was not removed"
                                                       : "the model of the heart beat artifact is poor";
  return fmt::format("only {:.0f} heart beats were found in {:.0f} s: {}. Is there a heart beat artifact? "
                     "Leave out --bcg if not; --channels NAME,... with those that show it best may help.{}",
                     doubt.measured, result.seconds(), effect, remedyForSearch(result));
}

std::string sentenceOnCoverage(const BeatDoubt& doubt, const CorrectionResult& result) {
  const char* const effect = result.plan.settings.method.removesOutsideBeats
                                 ? "everything below 35 Hz was removed there"
                                 : "the heart beat artifact, if there is one, is left there";
  return fmt::format("the chain of heart beats does not cover {:.1f} to {:.1f} s: {}. The stretch is "
                     "annotated \"{}\": leave it out of the analysis, or correct the rest with --interval "
                     "START:END.{}",
                     doubt.where.start, doubt.where.end, effect, unmodelledMarkerName,
                     remedyForSearch(result));
}

/// A doubt that is a sentence of its own; empty for those about the search.
std::string sentenceOn(const BeatDoubt& doubt, const CorrectionResult& result) {
  switch (doubt.kind) {
  case TooFewBeats:
  case FewBeats:
    return sentenceOnCount(doubt, result);
  case BeatListIsFull:
    return "there are more heart beats than a heart can make: the detection followed something else.";
  case ManyGuessed:
    return fmt::format("{:.0f} of the {:.0f} heart beats are guesses in gaps of {}: much of the artifact may "
                       "be left. Look at it, or leave the option out to have the beats found in the EEG.",
                       doubt.measured, doubt.expected, originOf(result));
  case GuessedStretch:
    return fmt::format("there are no heart beats in {} from {:.1f} to {:.1f} s: their places were guessed, "
                       "and the stretch is annotated \"{}\".",
                       originOf(result), doubt.where.start, doubt.where.end, guessedMarkerName);
  case ManyRefused:
    return fmt::format("{:.0f} of {} come closer than heart beats do, or between them, and were left out. "
                       "Are they heart beats?",
                       doubt.measured, originOf(result));
  case NothingInCommon:
    return fmt::format("hardly anything in the EEG goes with the heart beats of {} ({:.0f} % of the energy "
                       "around them): are they heart beats, of this recording?",
                       originOf(result), 100 * doubt.measured);
  case NotCovered:
    return sentenceOnCoverage(doubt, result);
  default:
    return {};
  }
}

} // namespace

std::vector<std::string> beatWarningsOf(const CorrectionResult& result) {
  const std::vector<BeatDoubt> doubts = doubtsAboutBeats(result.found, result.plan.settings.beats.source);
  std::vector<std::string> parts;
  for (const BeatDoubt& doubt : doubts)
    if (std::string part = partOfSentence(doubt); !part.empty()) parts.push_back(std::move(part));
  std::vector<std::string> warnings;
  for (const BeatDoubt& doubt : doubts) {
    if (std::string sentence = sentenceOn(doubt, result); !sentence.empty()) {
      warnings.push_back(std::move(sentence));
    } else if (!parts.empty()) {
      // All parts stand where the first doubt about the search does.
      warnings.push_back(fmt::format("the heart beats that were found in the EEG may be wrong: {}. {}",
                                     fmt::join(parts, "; "), remedyFor(result)));
      parts.clear();
    }
  }
  return warnings;
}

} // namespace emeg
