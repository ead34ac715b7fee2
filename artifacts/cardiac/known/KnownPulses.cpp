#include "artifacts/cardiac/known/KnownPulses.h"

#include "dsp/Statistics.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

constexpr size_t neighbourhood = 12;      // intervals on either side that tell the rhythm
constexpr double regularChange = 0.12;    // from one interval to the next, the median, of the median interval
constexpr double strayTolerance = 0.3;    // of the interval that a stray beat splits in two
constexpr double regularGap = 1.5;        // of the median interval: beats are missing
constexpr double irregularGap = 2.2;      // the same where the rhythm is irregular
constexpr double earlyBeat = 0.9;         // of the median interval
constexpr double compensationError = 0.2; // of two intervals
constexpr int mostStrayPasses = 10;

/// The rhythm around a place.
struct Rhythm {
  double interval = 0; ///< median
  bool isRegular = false;
};

/// Of the intervals before and behind interval `index`, which runs from beat `index` to the next.
Rhythm rhythmAround(const std::vector<double>& beats, size_t index) {
  const size_t nrOfIntervals = beats.size() - 1;
  const size_t from = index > neighbourhood ? index - neighbourhood : 0;
  const size_t to = std::min(index + neighbourhood + 1, nrOfIntervals);
  std::vector<double> intervals;
  for (size_t i = from; i < to; ++i)
    if (i != index || nrOfIntervals == 1) intervals.push_back(beats[i + 1] - beats[i]);
  std::vector<double> changes;
  for (size_t i = 1; i < intervals.size(); ++i) changes.push_back(std::abs(intervals[i] - intervals[i - 1]));
  Rhythm rhythm;
  rhythm.interval = upperMedian(intervals);
  rhythm.isRegular = changes.empty() || upperMedian(changes) < regularChange * rhythm.interval;
  return rhythm;
}

double medianInterval(const std::vector<double>& beats, double shortest) {
  std::vector<double> intervals;
  for (size_t i = 1; i < beats.size(); ++i)
    if (beats[i] - beats[i - 1] >= shortest) intervals.push_back(beats[i] - beats[i - 1]);
  return intervals.empty() ? shortest : upperMedian(intervals);
}

/// Of beats that are closer than any heart's, the one stays that lies closer to one interval behind the beat
/// before.
std::vector<double> withoutDoubled(const std::vector<double>& beats, double shortest, int64_t& nrOfDoubled) {
  const double interval = medianInterval(beats, shortest);
  std::vector<double> kept;
  for (const double beat : beats) {
    if (kept.empty() || beat - kept.back() >= shortest) {
      kept.push_back(beat);
      continue;
    }
    ++nrOfDoubled;
    if (kept.size() < 2) continue;
    const double expected = kept[kept.size() - 2] + interval;
    if (std::abs(beat - expected) < std::abs(kept.back() - expected)) kept.back() = beat;
  }
  return kept;
}

/// How far the interval would be from the rhythm's without this beat, in intervals; a large number for a beat
/// that belongs there.
double misfitWithout(const std::vector<double>& beats, size_t index) {
  constexpr double belongsThere = 1e9;
  if (index == 0 || index + 1 >= beats.size()) return belongsThere;
  const Rhythm rhythm = rhythmAround(beats, index);
  const double misfit = std::abs(beats[index + 1] - beats[index - 1] - rhythm.interval) / rhythm.interval;
  return rhythm.isRegular && misfit < strayTolerance ? misfit : belongsThere;
}

/// One pass: the beats without which the rhythm is better than without their neighbours.
bool leaveOutStray(std::vector<double>& beats, int64_t& nrOfStray) {
  std::vector<double> misfits(beats.size());
  for (size_t i = 0; i < beats.size(); ++i) misfits[i] = misfitWithout(beats, i);
  std::vector<double> kept;
  for (size_t i = 0; i < beats.size(); ++i) {
    const double before = i > 0 ? misfits[i - 1] : misfits[i];
    const double behind = i + 1 < beats.size() ? misfits[i + 1] : misfits[i];
    const bool isStray = misfits[i] < 1 && misfits[i] < before && misfits[i] <= behind;
    if (!isStray) kept.push_back(beats[i]);
  }
  const bool changed = kept.size() < beats.size();
  nrOfStray += static_cast<int64_t>(beats.size() - kept.size());
  beats.swap(kept);
  return changed;
}

/// Beats that are missing between beat `index` and the next; 0 for an interval that a heart can make.
int64_t nrOfMissing(const std::vector<double>& beats, size_t index) {
  const double interval = beats[index + 1] - beats[index];
  const Rhythm rhythm = rhythmAround(beats, index);
  if (interval < (rhythm.isRegular ? regularGap : irregularGap) * rhythm.interval) return 0;
  if (index > 0) {
    const double before = beats[index] - beats[index - 1];
    const double together = (before + interval) / (2 * rhythm.interval);
    if (before < earlyBeat * rhythm.interval && std::abs(together - 1) < compensationError) return 0;
  }
  return static_cast<int64_t>(std::floor(interval / rhythm.interval + 0.5)) - 1;
}

void fillGaps(const std::vector<double>& beats, double shortest, KnownPulses& pulses) {
  for (size_t i = 0; i < beats.size(); ++i) {
    pulses.positions.push_back(beats[i]);
    if (i + 1 == beats.size() || beats.size() < 3) continue;
    const double interval = beats[i + 1] - beats[i];
    const int64_t nrOfBeats =
        std::min(nrOfMissing(beats, i), static_cast<int64_t>(std::floor(interval / shortest)) - 1);
    if (nrOfBeats < 1) continue;
    const double step = interval / static_cast<double>(nrOfBeats + 1);
    for (int64_t k = 1; k <= nrOfBeats; ++k)
      pulses.positions.push_back(std::floor(beats[i] + static_cast<double>(k) * step + 0.5));
    pulses.gaps.push_back({beats[i], beats[i + 1], nrOfBeats});
  }
}

} // namespace

KnownPulses usablePulses(std::span<const double> beats, int64_t length, float rate, bool withoutStray) {
  KnownPulses pulses;
  std::vector<double> inside;
  for (const double beat : beats)
    if (beat >= 0 && beat <= static_cast<double>(length - 1)) inside.push_back(std::floor(beat + 0.5));
  pulses.nrOfOutside = static_cast<int64_t>(beats.size() - inside.size());
  std::sort(inside.begin(), inside.end());

  const double shortest = shortestBeatInterval * static_cast<double>(rate);
  std::vector<double> kept = withoutDoubled(inside, shortest, pulses.nrOfDoubled);
  for (int pass = 0; withoutStray && pass < mostStrayPasses && kept.size() > 2; ++pass)
    if (!leaveOutStray(kept, pulses.nrOfStray)) break;
  fillGaps(kept, shortest, pulses);
  return pulses;
}

HeartPeriod periodOfPulses(const std::vector<double>& positions) {
  HeartPeriod heart;
  if (positions.size() < 2) return heart;
  const double interval = medianInterval(positions, 0);
  heart.period = static_cast<int32_t>(std::floor(interval + 0.5));
  heart.shortest = static_cast<int32_t>(std::floor(interval / std::sqrt(2.0) + 0.5));
  heart.longest = static_cast<int32_t>(std::floor(interval * std::sqrt(2.0) + 0.5));
  return heart;
}

} // namespace emeg
