#pragma once

#include "files/formats/Protocol.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Marker positions are whole microseconds from the start of the recording.
constexpr double microsecondsPerSecond = 1000000.0;

/// More than the longest recording can hold.
constexpr int64_t maxNrOfGradientMarkers = 10000000;

/// Suffix of the protocol that holds the detected onsets.
inline constexpr const char* triggerProtocolName = "_ArtifactsTriggers";

/// An empty trigger protocol with its placeholder slot.
Protocol makeTriggerProtocol();

/// What the markers of a scan follow from. Durations in seconds. The members are those of MRSequence that
/// markers need: the file formats stand below the computations and know none of their types.
struct GradientMarkerTiming {
  int32_t nrOfVolumes = 0;
  int32_t nrOfSlicesPerVolume = 0;
  double volumeDuration = 0;
  double sliceDuration = 0;
  double firstTriggerTime = 0;
  bool onePerSlice = false;
};

/// Adds "MRGradientTriggers": one marker per volume, or with `onePerSlice` one per slice of every volume, at
/// floor((v x volumeDuration + firstTriggerTime + s x sliceDuration) x timeFactor + 0.5) plus
/// intervalStartUs. `timeFactor` is the run's microseconds per second. Negative counts
/// add no marker, nor do times that are not finite; markers beyond maxNrOfGradientMarkers are left out.
void addGradientMarkers(Protocol& triggers, const GradientMarkerTiming& timing, double timeFactor,
                        double intervalStartUs);

/// Adds "HeartPulseTriggers": one marker per pulse at floor(position x sampleIntervalUs + 0.5) plus
/// intervalStartUs. Positions in samples.
void addHeartPulseMarkers(Protocol& triggers, const std::vector<double>& pulsePositions,
                          double sampleIntervalUs, double intervalStartUs);

} // namespace emeg
