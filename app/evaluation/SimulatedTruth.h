#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// What the truth file of a simulated recording says about its scan, and where the other files are.
struct SimulatedTruth {
  std::string recordingPath;
  std::string cleanPath;
  std::string pulsePath; ///< empty: no heart beat artifact
  double microvoltsPerUnit = 1;
  std::vector<std::string> channelNames;
  int nrOfVolumes = 0;
  int nrOfSlicesPerVolume = 0;
  double volumeDuration = 0; ///< seconds, as all times here
  double sliceDuration = 0;
  double firstVolumeOnset = 0;
  double endOfScan = 0;
};

/// Reads the truth file that the simulator wrote; other files are looked up beside it. Throws UnreadableFile
/// when it is not there, is no such file, or describes no scan.
SimulatedTruth readSimulatedTruth(const std::string& path);

} // namespace emeg
