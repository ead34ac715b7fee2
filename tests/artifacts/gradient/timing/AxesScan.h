#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// A scan as the gradients of three axes leave it: every ramp of a trapezoid is one pulse as long as the
/// amplifier's low-pass makes it, spoilers, slice selection and an alternating readout, mixed differently in
/// every channel. Other than in simulateScan, no two channels have the same waveform.
struct AxesScan {
  double fs = 1000;
  double seconds = 40;
  double firstOnset = 3.0042;    ///< seconds
  double sliceDuration = 0.0701; ///< seconds
  double deadTime = 0.004;       ///< seconds, at the end of every volume
  int nrOfSlices = 20;
  int nrOfVolumes = 20;
  double firstSliceAddition = 0.1;
  double peakUv = 1500;
  double amplitudeDrift = 0; ///< relative, from the first to the last volume
  double jitter = 0;         ///< seconds by which every volume comes early or late, standard deviation
  uint64_t seed = 1;

  double volumeDuration() const { return nrOfSlices * sliceDuration + deadTime; }
  double end() const { return firstOnset + nrOfVolumes * volumeDuration(); }
  /// Microvolts, with 1/f noise and a heart beat's artifact.
  std::vector<std::vector<double>> channels(int count) const;
};

} // namespace emeg
