#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// One scan. The recording may begin behind its start and end before its end.
struct SimulatedScan {
  int nrOfVolumes = 0;
  double firstVolumeOnset = 0; ///< seconds
  double endOfScan = 0;
};

/// What the truth file of a simulated recording says about its scans and its heart, and where the other files
/// are.
struct SimulatedTruth {
  std::string recordingPath;
  std::string cleanPath;
  std::string pulsePath; ///< empty: no heart beat artifact
  double microvoltsPerUnit = 1;
  std::vector<std::string> channelNames;
  double seconds = 0; ///< length of the recording

  std::vector<SimulatedScan> scans; ///< one after the other; empty: then the next three are 0
  int nrOfSlicesPerVolume = 0;
  double volumeDuration = 0; ///< seconds, as all times here
  double sliceDuration = 0;
  bool hasScan() const { return !scans.empty(); }

  /// Times of all beats, in ascending order; empty without a heart. Also those just before the recording's
  /// start and behind its end, whose artifacts may touch it.
  std::vector<double> beatTimes;
  bool hasHeart() const { return !pulsePath.empty(); }
};

/// Reads the truth file that the simulator wrote; other files are looked up beside it. Throws UnreadableFile
/// when it is not there or is no such file.
SimulatedTruth readSimulatedTruth(const std::string& path);

} // namespace emeg
