#include "files/formats/TriggerMarkers.h"

#include <algorithm>
#include <cmath>

namespace emeg {

Protocol makeTriggerProtocol() {
  Protocol triggers(false, triggerProtocolName, TimeResolution::Usec);
  triggers.startConditions();
  return triggers;
}

void addGradientMarkers(Protocol& triggers, const GradientMarkerTiming& timing, double timeFactor,
                        double intervalStartUs) {
  const int64_t nrOfVolumes = std::max(timing.nrOfVolumes, 0);
  const int64_t nrOfSlicesPerVolume = std::max(timing.nrOfSlicesPerVolume, 0);
  triggers.findOrAddCondition("MRGradientTriggers", nrOfVolumes * nrOfSlicesPerVolume, 64, 64, 255);

  const int64_t markersPerVolume = timing.onePerSlice ? nrOfSlicesPerVolume : 1;
  const int64_t nrOfMarkers = std::min(nrOfVolumes * markersPerVolume, maxNrOfGradientMarkers);
  for (int64_t i = 0; i < nrOfMarkers; ++i) {
    const int64_t v = i / markersPerVolume;
    const int64_t s = i % markersPerVolume;
    double seconds = static_cast<double>(v) * timing.volumeDuration + timing.firstTriggerTime;
    if (timing.onePerSlice) seconds += static_cast<double>(s) * timing.sliceDuration;
    const double marker = std::floor(seconds * timeFactor + 0.5) + intervalStartUs;
    if (std::isfinite(marker)) triggers.addInterval(marker, marker);
  }
}

void addHeartPulseMarkers(Protocol& triggers, const std::vector<double>& pulsePositions,
                          double sampleIntervalUs, double intervalStartUs) {
  triggers.findOrAddCondition("HeartPulseTriggers", static_cast<int64_t>(pulsePositions.size()), 255, 64, 64);
  for (const double position : pulsePositions) {
    const double marker = std::floor(position * sampleIntervalUs + 0.5) + intervalStartUs;
    triggers.addInterval(marker, marker);
  }
}

} // namespace emeg
