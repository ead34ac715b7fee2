#pragma once

#include "app/simulation/Simulation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// Names (without folder) of the files of one simulated recording; empty ones are not written.
struct RecordingFileNames {
  std::string ctc;
  std::string ccd;
  std::string prt;
  std::string clean;
  std::string pulse;
  std::string truth;
};

/// How the recording's samples are stored.
struct SampleStorage {
  int32_t dataType = 1;         ///< 1 float, 2 double, 3 16-bit integer
  int32_t dataOrganisation = 2; ///< 1 channel after channel, 2 multiplexed
  double microvoltsPerUnit = 1;
};

/// Collects the sizes of a recording's parts while it is written.
class PartSizes {
public:
  explicit PartSizes(const Simulation& simulation);

  void add(const SimulatedBlock& block);

  /// RMS in microvolts per channel; the gradient artifact's from each scan's start to its end, the others'
  /// over the whole recording.
  std::vector<double> cleanRms() const;
  std::vector<double> gradientRms() const;
  std::vector<double> pulseRms() const;

private:
  int64_t nrOfScanTimePoints_ = 0;
  int64_t nrOfTimePoints_ = 0;
  double burstSquares_ = 0;
  std::vector<double> gains_;
  std::vector<double> cleanSquares_;
  std::vector<double> pulseSquares_;
};

/// The truth about a recording as JSON text: every parameter, the exact times of scan and heart, the sizes of
/// the parts, how many triggers of the scanner are among the markers. Times in seconds from the first sample,
/// voltages in microvolts.
std::string truthText(const Simulation& simulation, const PartSizes& sizes, const RecordingFileNames& names,
                      const SampleStorage& storage, size_t nrOfTriggers);

} // namespace emeg
