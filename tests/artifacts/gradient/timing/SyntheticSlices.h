#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// One scan of slices with one band-limited waveform (40 to 180 Hz), for signals that no preset of the
/// simulation makes. Times in seconds.
struct SyntheticSlices {
  double begin = 0;
  double volumeDuration = 0;
  int nrOfVolumes = 0;
  double sliceDuration = 0;
  int nrOfSlices = 0;
  double modulation = 0; ///< slices' sizes differ by up to so much
  double jitter = 0;     ///< standard deviation of the volumes' onsets
  uint64_t seed = 1;     ///< of waveform and sizes
};

/// Noise of standard deviation 1, with scans of 50 times that.
std::vector<double> syntheticRecording(double samplingFrequency, double seconds,
                                       const std::vector<SyntheticSlices>& scans);

} // namespace emeg
