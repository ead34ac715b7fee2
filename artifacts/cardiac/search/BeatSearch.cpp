#include "artifacts/cardiac/search/BeatSearch.h"

#include "artifacts/cardiac/search/BeatCarrying.h"
#include "artifacts/cardiac/search/DetectionSignal.h"
#include "artifacts/cardiac/search/PulseSelection.h"

#include <algorithm>

namespace emeg {

namespace {

/// Where lists are full there are beats behind the last one that only the search knows how to find.
void carryToEdges(const BcgSeries& series, size_t capacity, FoundBeats& found) {
  CarriedBeats carried = carryBeatsToEdges(series, found.positions);
  if (found.listIsFull || found.candidatesAreFull) carried.behind.clear();
  const auto cut = [&](std::vector<double>& beats, bool nearestLast) {
    const size_t room = capacity - std::min(capacity, found.positions.size());
    if (beats.size() <= room) return;
    found.listIsFull = true;
    const auto surplus = static_cast<std::ptrdiff_t>(beats.size() - room);
    if (nearestLast) {
      beats.erase(beats.begin(), beats.begin() + surplus);
    } else {
      beats.erase(beats.end() - surplus, beats.end());
    }
  };
  cut(carried.inFront, true);
  found.positions.insert(found.positions.begin(), carried.inFront.begin(), carried.inFront.end());
  cut(carried.behind, false);
  found.positions.insert(found.positions.end(), carried.behind.begin(), carried.behind.end());
  found.nrOfCarriedInFront = static_cast<int64_t>(carried.inFront.size());
  found.nrOfCarriedBehind = static_cast<int64_t>(carried.behind.size());
}

} // namespace

FoundBeats findBeats(const BcgSeries& series, const BeatSearchSettings& settings) {
  FoundBeats found;
  found.period = estimateHeartPeriod(series);
  found.detectionSignal = buildPulseDetectionSignal(series, found.period);
  // Two minima are two samples apart at least.
  const float candidatesPerSecond = settings.candidatesPerSecond.value_or(series.rate);
  HeartPulses pulses = selectHeartPulses(found.detectionSignal, series.rate, candidatesPerSecond,
                                         found.period, settings.capacity);
  found.positions = std::move(pulses.positions);
  found.listIsFull = pulses.listIsFull;
  found.candidatesAreFull = pulses.candidatesAreFull;
  if (settings.carryToEdges) carryToEdges(series, settings.capacity, found);
  return found;
}

} // namespace emeg
