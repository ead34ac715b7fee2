#pragma once

#include "app/simulation/ScanTiming.h"
#include "app/simulation/SimulationParameters.h"

#include <functional>
#include <vector>

namespace emeg {

/// One channel of a simulated recording with its truth.
struct SimulatedScan {
  double fs = 0;
  double seconds = 0;
  std::vector<double> recorded;
  std::vector<double> clean;
  std::vector<ScanTiming> timings;

  const ScanTiming& timing() const { return timings.front(); }
  double onsetOf(int64_t volume) const { return timing().volumeOnset(volume) * fs; }
};

/// `change` may be empty.
SimulatedScan simulateScan(Preset preset, double fs, double seconds,
                           const std::function<void(SimulationParameters&)>& change = {}, uint64_t seed = 1);

} // namespace emeg
