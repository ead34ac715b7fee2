#include "app/correct/MarkerTransfer.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

// A beat's model is complete where the epochs of the two junctions beside it overlap: behind this part of the
// first interval.
constexpr double modelBegins = 0.6;
constexpr const char* foundType = "Comment";
constexpr const char* badType = "Bad";

RecordingMarker markerAt(const char* type, const char* name, double seconds, double rate) {
  RecordingMarker marker;
  marker.type = type;
  marker.description = name;
  marker.onset = seconds * rate;
  return marker;
}

/// One per slice where there are pauses between volumes, else one per volume; also those of volumes that the
/// scan's beginning or end cuts.
void addGradientMarkers(const FoundScan& scan, double rate, double nrOfTimePoints,
                        std::vector<RecordingMarker>& markers) {
  const MRSequence& sequence = scan.sequence;
  const int32_t perVolume = sequence.hasVolumeGaps ? sequence.nrOfSlicesPerVolume : 1;
  const double slack = sequence.sliceDuration / 2;
  for (int32_t volume = -scan.partsBefore; volume < sequence.nrOfVolumes + scan.partsBehind; ++volume) {
    const bool isWhole = volume >= 0 && volume < sequence.nrOfVolumes;
    for (int32_t slice = 0; slice < perVolume; ++slice) {
      const double onset = sequence.onsetOf(volume, slice, 1);
      if (!isWhole && (onset < scan.begin - slack || onset > scan.end - slack)) continue;
      RecordingMarker marker = markerAt(foundType, gradientMarkerName, onset, rate);
      if (marker.onset >= 0 && marker.onset < nrOfTimePoints) markers.push_back(std::move(marker));
    }
  }
}

void addBadMarker(const char* name, const Stretch& stretch, double rate, double nrOfTimePoints,
                  std::vector<RecordingMarker>& markers) {
  RecordingMarker marker = markerAt(badType, name, stretch.start, rate);
  marker.duration = std::min(stretch.end * rate, nrOfTimePoints) - marker.onset;
  markers.push_back(std::move(marker));
}

/// Onset and end in the corrected interval; false when the marker lies outside.
bool moveIntoInterval(RecordingMarker& marker, const CorrectionPlan& plan) {
  const auto first = static_cast<double>(plan.firstTimePoint);
  const auto end = static_cast<double>(plan.endTimePoint());
  if (plan.hasInterval) {
    const double markerEnd = marker.onset + marker.duration;
    const bool isPoint = !(marker.duration > 0);
    if (marker.onset >= end || (isPoint ? marker.onset < first : markerEnd <= first)) return false;
    marker.onset = std::max(marker.onset, first);
    marker.duration = isPoint ? marker.duration : std::min(markerEnd, end) - marker.onset;
  }
  marker.onset = (marker.onset - first) / plan.decimationFactor;
  marker.duration /= plan.decimationFactor;
  return true;
}

} // namespace

std::vector<Stretch> unmodelledStretches(const Findings& found, double seconds) {
  constexpr size_t fewestPulses = 3;
  const std::vector<double>& times = found.pulseTimes;
  if (times.size() < fewestPulses) return {};
  double earliest = 0;
  double latest = 0;
  if (!found.pulseDelays.empty()) {
    const auto [low, high] = std::minmax_element(found.pulseDelays.begin(), found.pulseDelays.end());
    earliest = *low;
    latest = *high;
  }
  const double begin = times[0] + latest + modelBegins * (times[1] - times[0]);
  double end = seconds;
  for (const double delay : {earliest, latest}) {
    // A pulse behind the recording's end is none.
    size_t n = times.size();
    while (n > 2 && times[n - 1] + delay >= seconds) --n;
    end = std::min(end, times[n - 1] + delay - modelBegins * (times[n - 1] - times[n - 2]));
  }
  return {{0, begin}, {end, seconds}};
}

std::vector<Stretch> guessedStretches(const Findings& found) {
  constexpr int64_t severalBeats = 4;
  std::vector<Stretch> stretches;
  for (const FilledGap& gap : found.knownPulses.gaps)
    if (gap.nrOfBeats >= severalBeats)
      stretches.push_back({gap.from / found.pulseSampleRate, gap.to / found.pulseSampleRate});
  return stretches;
}

std::vector<RecordingMarker> transferMarkers(const RecordingHeader& header, const CorrectionPlan& plan,
                                             const Findings& found, bool atWholeSamples) {
  std::vector<RecordingMarker> markers;
  for (RecordingMarker marker : header.markers)
    if (moveIntoInterval(marker, plan)) markers.push_back(std::move(marker));

  const double rate = header.samplingFrequency / plan.decimationFactor;
  const auto length = static_cast<double>(plan.nrOfOutputTimePoints());
  const size_t nrOfCarried = markers.size();
  for (const FoundScan& scan : found.timing.scans) addGradientMarkers(scan, rate, length, markers);
  for (const double time : found.pulseTimes)
    markers.push_back(markerAt(foundType, pulseMarkerName, time, rate));
  const double seconds = static_cast<double>(plan.nrOfTimePoints) / header.samplingFrequency;
  for (const Stretch& stretch : unmodelledStretches(found, seconds))
    addBadMarker(unmodelledMarkerName, stretch, rate, length, markers);
  for (const Stretch& stretch : guessedStretches(found))
    addBadMarker(guessedMarkerName, stretch, rate, length, markers);
  if (atWholeSamples) {
    for (size_t i = nrOfCarried; i < markers.size(); ++i) {
      markers[i].onset = std::min(std::floor(markers[i].onset + 0.5), length - 1);
      markers[i].duration = std::min(std::floor(markers[i].duration + 0.5), length - markers[i].onset);
    }
    // A marker behind the last sample that is kept would round to one that is not there.
    for (size_t i = 0; i < nrOfCarried; ++i)
      if (markers[i].onset > length - 1 && markers[i].onset < length) markers[i].onset = length - 1;
  }
  std::stable_sort(markers.begin(), markers.end(),
                   [](const RecordingMarker& a, const RecordingMarker& b) { return a.onset < b.onset; });
  return markers;
}

} // namespace emeg
