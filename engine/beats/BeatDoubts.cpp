#include "engine/beats/BeatDoubts.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace emeg {

namespace {

using enum BeatDoubtKind;
using Doubts = std::vector<BeatDoubt>;

constexpr size_t fewestBeats = 3;   // that a model can be made of
constexpr size_t fewBeats = 20;     // for three components of their shape
constexpr double shortStretch = 3;  // seconds without a model at the ends that every recording has
constexpr double manyGuessed = 0.1; // of the beats
constexpr double manyRefused = 0.1; // of the beats
constexpr int64_t severalBeats = 4; // in one gap

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

void doubtCount(const Findings& found, Doubts& doubts) {
  const size_t count = found.pulseTimes.size();
  if (count < fewBeats)
    doubts.push_back({count < fewestBeats ? TooFewBeats : FewBeats, static_cast<double>(count), 0, {}});
  if (found.pulseListIsFull) doubts.push_back({BeatListIsFull, 0, 0, {}});
}

void doubtSearch(const Findings& found, Doubts& doubts) {
  if (found.pulseTimes.size() < fewestBeats || !found.plausibility) return;
  const PulsePlausibility& beats = *found.plausibility;
  const double rate = found.beatsPerMinute;
  const auto rateOf = [&](double interval) { return 60 * found.pulseSampleRate / interval; };
  if (rate < slowestHeart || rate > fastestHeart) doubts.push_back({AtLimitOfSearch, rate, 0, {}});
  if (beats.commonPeriod > 0 && contradict(rateOf(beats.commonPeriod), rate))
    doubts.push_back({PeriodOfOneStretch, rate, rateOf(beats.commonPeriod), {}});
  if (contradict(rateOf(beats.meanInterval), rate))
    doubts.push_back({IntervalsContradictPeriod, rateOf(beats.meanInterval), rate, {}});
  if (beats.offIntervals > manyOffIntervals) {
    const double first = beats.firstOff / found.pulseSampleRate;
    doubts.push_back({OffIntervals, beats.offIntervals, 0, {first, first}});
  }
  if (beats.commonShare < littleInCommon) doubts.push_back({LittleInCommon, beats.commonShare, 0, {}});
  if (beats.unlikePulses > manyUnlike) doubts.push_back({UnlikeBeats, beats.unlikePulses, 0, {}});
}

void doubtKnown(const Findings& found, Doubts& doubts) {
  const KnownPulses& beats = found.knownPulses;
  const auto nrOfBeats = static_cast<double>(beats.positions.size());
  int64_t filled = 0;
  for (const FilledGap& gap : beats.gaps) filled += gap.nrOfBeats;
  const auto guessed = static_cast<double>(filled);
  if (guessed > manyGuessed * nrOfBeats) doubts.push_back({ManyGuessed, guessed, nrOfBeats, {}});
  for (const Stretch& stretch : guessedStretches(found)) doubts.push_back({GuessedStretch, 0, 0, stretch});
  const auto refused = static_cast<double>(beats.nrOfDoubled + beats.nrOfStray);
  if (refused > manyRefused * nrOfBeats) doubts.push_back({ManyRefused, refused, 0, {}});
  if (found.plausibility && found.plausibility->commonShare < nothingInCommon)
    doubts.push_back({NothingInCommon, found.plausibility->commonShare, 0, {}});
}

} // namespace

std::vector<Stretch> guessedStretches(const Findings& found) {
  std::vector<Stretch> stretches;
  for (const FilledGap& gap : found.knownPulses.gaps)
    if (gap.nrOfBeats >= severalBeats)
      stretches.push_back({gap.from / found.pulseSampleRate, gap.to / found.pulseSampleRate});
  return stretches;
}

Doubts doubtsAboutBeats(const Findings& found, BeatSource source) {
  Doubts doubts;
  doubtCount(found, doubts);
  if (source == BeatSource::Blind)
    doubtSearch(found, doubts);
  else
    doubtKnown(found, doubts);
  for (const Stretch& stretch : found.withoutModel)
    if (stretch.seconds() > shortStretch) doubts.push_back({NotCovered, 0, 0, stretch});
  return doubts;
}

} // namespace emeg
