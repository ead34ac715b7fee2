#include "plugin/converter/correction/RunObserver.h"

#include "artifacts/cardiac/search/BeatSearch.h"
#include "files/formats/TriggerMarkers.h"
#include "plugin/bridge/HostFunctions.h"
#include "plugin/converter/messages/Text.h"
#include "plugin/converter/run/MachineResources.h"

namespace emeg {

namespace {

constexpr int longestWindow = 1000; // slices

} // namespace

void RunObserver::stepBegins(Step step, int channel) {
  if (step == Step::CorrectingChannel) c_.log.logProgress("Processing channel #%d", numberOf(channel));
  if (step == Step::CorrectingForBeats) c_.log.logProgress("Pre-processing channel #%d", numberOf(channel));
  if (step == Step::FindingBeats) c_.log.logProgress("Automatic detection of heart pulses");
  if (step == Step::RemovingBeats)
    c_.log.logProgress("Removing heart pulse artifacts from channel #%d", numberOf(channel));
}

void RunObserver::detail(const std::string& line) {
  c_.log.logProgress("%s", line.c_str());
}

void RunObserver::notFiniteFound(int channel, int64_t count) {
  c_.log.logProgress("Channel #%d: %d samples that are not numbers were set to 0.", numberOf(channel),
                     static_cast<int>(count));
}

void RunObserver::saturationFound(int) {
  c_.log.logProgress("Saturations were detected and are being corrected.");
}

void RunObserver::sequenceFound(const MRSequence& sequence) {
  c_.sequence = sequence;
  c_.log.logProgress("Writing MR gradient triggers");
  const GradientMarkerTiming timing{sequence.nrOfVolumes,      sequence.nrOfSlicesPerVolume,
                                    sequence.volumeDuration,   sequence.sliceDuration,
                                    sequence.firstTriggerTime, sequence.hasVolumeGaps};
  addGradientMarkers(c_.protocolList.current(), timing, c_.protocolList.timeFactor, intervalStartUs());
}

int RunObserver::windowFor(double slicesPerSecond, int proposed) {
  int answer = host::dialogIntegerParameter(0);
  if (answer < 0) {
    const std::string prompt = formatText("Window half-length in slices (%.2f slices/s):", slicesPerSecond);
    answer = host::integerInput(prompt.c_str(), proposed, 1, longestWindow);
  }
  if (answer <= 0) {
    abortRun(c_.log);
    throw RunEnded();
  }
  return answer;
}

void RunObserver::heartPeriodFound(double beatsPerMinute) {
  c_.log.logProgress("Heart pulsations per minute: %.2f", beatsPerMinute);
}

void RunObserver::beatsFound(const FoundBeats& beats, float rate) {
  c_.beats = beats;
  c_.log.logProgress("Writing heart pulse triggers");
  const double sampleIntervalUs = static_cast<double>(1 / rate) * c_.protocolList.timeFactor;
  addHeartPulseMarkers(c_.protocolList.current(), beats.positions, sampleIntervalUs, intervalStartUs());
  if (beats.listIsFull) {
    c_.log.logProgress(
        "The heart pulse list is full: behind the last pulse all signal below 35 Hz is removed.");
  }
  if (beats.candidatesAreFull) {
    c_.log.logProgress("The list of heart pulse candidates is full: behind the last pulse all signal below "
                       "35 Hz is removed.");
  }
}

void RunObserver::beatModelsMade(int channels, int64_t length, int epochs, int epochLength) {
  c_.log.logProgress("PulseModel: %d channels X %lld timepoints", channels, static_cast<long long>(length));
  c_.log.logProgress("TimeCorrectedPulses: %d channels X %d pulses X %d timepoints", channels, epochs,
                     epochLength);
}

void RunObserver::memoryNeeded(uint64_t bytes) {
  MachineResources needed;
  needed.memory = bytes;
  const std::string& path = c_.inputPathBuffer.path();
  const std::string shortage = describeShortage(needed, availableResources(path), path);
  if (shortage.empty()) return;
  showError(shortage);
  throw RunEnded();
}

} // namespace emeg
