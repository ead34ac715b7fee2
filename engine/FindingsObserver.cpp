#include "engine/FindingsObserver.h"

#include "artifacts/cardiac/search/BeatSearch.h"

#include <algorithm>

namespace emeg {

void FindingsObserver::sequenceFound(const MRSequence& sequence) {
  FoundScan scan;
  scan.sequence = sequence;
  scan.begin = std::max(sequence.firstTriggerTime, 0.0);
  scan.end = std::min(sequence.onsetOf(sequence.nrOfVolumes, 0, 1), seconds_);
  findings_.timing.scans = {scan};
  findings_.timing.source = TimingSource::QuietBetweenSlices;
  next_.sequenceFound(sequence);
}

int FindingsObserver::windowFor(double slicesPerSecond, int proposed) {
  const int window = next_.windowFor(slicesPerSecond, proposed);
  MRSequence& sequence = findings_.timing.scans.front().sequence;
  sequence.windowHalfLength = windowHalfLengthOf(sequence, window);
  return window;
}

void FindingsObserver::heartPeriodFound(double beatsPerMinute) {
  findings_.beatsPerMinute = beatsPerMinute;
  next_.heartPeriodFound(beatsPerMinute);
}

/// In front of the first beat and behind the last everything below 35 Hz goes: no model stays behind there.
void FindingsObserver::beatsFound(const FoundBeats& beats, float rate) {
  findings_.pulseSampleRate = static_cast<double>(rate);
  findings_.pulseListIsFull = beats.listIsFull;
  for (const double position : beats.positions)
    findings_.pulseTimes.push_back(position / findings_.pulseSampleRate);
  if (!findings_.pulseTimes.empty())
    findings_.withoutModel = {{0, findings_.pulseTimes.front()}, {findings_.pulseTimes.back(), seconds_}};
  next_.beatsFound(beats, rate);
}

void FindingsObserver::beatModelsMade(int channels, int64_t length, int epochs, int epochLength) {
  next_.beatModelsMade(channels, length, epochs, epochLength);
}

} // namespace emeg
