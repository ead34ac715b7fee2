#include "app/simulation/ScannerTriggers.h"

#include <algorithm>
#include <cmath>

namespace emeg {

std::vector<int64_t> scannerTriggers(const SimulationParameters& parameters,
                                     const GradientArtifact& artifact) {
  using Per = ScannerTriggerParameters::Per;
  std::vector<int64_t> timePoints;
  if (parameters.triggers.per == Per::None) return timePoints;
  const double end = static_cast<double>(parameters.nrOfTimePoints());
  for (size_t scan = 0; scan < artifact.timings().size(); scan++) {
    const ScanTiming& timing = artifact.timings()[scan];
    const int perVolume = parameters.triggers.per == Per::Slice ? timing.nrOfSlicesPerVolume : 1;
    for (int64_t v = 0; v < timing.nrOfVolumes; v++) {
      for (int s = 0; s < perVolume; s++) {
        const double onset = artifact.volumeOnset(scan, v) + s * timing.sliceDuration;
        const double timePoint = std::ceil(onset * parameters.samplingFrequency);
        if (timePoint >= 0 && timePoint < end) timePoints.push_back(static_cast<int64_t>(timePoint));
      }
    }
  }
  std::sort(timePoints.begin(), timePoints.end());
  return timePoints;
}

} // namespace emeg
