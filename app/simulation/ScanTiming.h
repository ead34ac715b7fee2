#pragma once

#include <cstdint>

namespace emeg {

/// When a simulated scanner acquires: exact times in seconds from the first sample, no multiples of the
/// sampling interval.
struct ScanTiming {
  int64_t nrOfVolumes = 0;
  int nrOfSlicesPerVolume = 0;
  double volumeDuration = 0;
  double sliceDuration = 0;
  double firstVolumeOnset = 0;

  double volumeOnset(int64_t volume) const {
    return firstVolumeOnset + static_cast<double>(volume) * volumeDuration;
  }
  double sliceOnset(int64_t volume, int slice) const { return volumeOnset(volume) + slice * sliceDuration; }
  /// When the volume after the last one would begin.
  double end() const { return volumeOnset(nrOfVolumes); }
};

} // namespace emeg
