#include "app/correct/MarkerTransfer.h"

#include "engine/beats/BeatDoubts.h"

#include <algorithm>
#include <cmath>

namespace emeg {

namespace {

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
  marker.onset = (marker.onset - first) / plan.samplesPerOutput;
  marker.duration /= plan.samplesPerOutput;
  return true;
}

} // namespace

std::vector<RecordingMarker> transferMarkers(const RecordingHeader& header, const CorrectionPlan& plan,
                                             const Findings& found, bool atWholeSamples) {
  std::vector<RecordingMarker> markers;
  for (RecordingMarker marker : header.markers)
    if (moveIntoInterval(marker, plan)) markers.push_back(std::move(marker));

  const double rate = plan.outputRate;
  const auto length = static_cast<double>(plan.nrOfOutputs);
  const size_t nrOfCarried = markers.size();
  for (const FoundScan& scan : found.timing.scans) addGradientMarkers(scan, rate, length, markers);
  for (const double time : found.pulseTimes)
    markers.push_back(markerAt(foundType, pulseMarkerName, time, rate));
  for (const Stretch& stretch : found.withoutModel)
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
