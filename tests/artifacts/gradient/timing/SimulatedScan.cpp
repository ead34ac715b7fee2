#include "tests/artifacts/gradient/timing/SimulatedScan.h"

#include "app/simulation/Simulation.h"

#include <gtest/gtest.h>

namespace emeg {

SimulatedScan simulateScan(Preset preset, double fs, double seconds,
                           const std::function<void(SimulationParameters&)>& change, uint64_t seed) {
  SimulationParameters parameters = presetParameters(preset, fs);
  parameters.seed = seed;
  parameters.seconds = seconds;
  parameters.nrOfChannels = 1;
  if (change) change(parameters);
  EXPECT_EQ(problemWith(parameters), "");
  SimulatedScan scan;
  scan.fs = fs;
  scan.seconds = seconds;
  Simulation simulation(parameters);
  SimulatedBlock block;
  while (simulation.next(1 << 16, block))
    for (int64_t t = 0; t < block.nrOfTimePoints; t++) {
      scan.recorded.push_back(block.recorded(0, t));
      scan.clean.push_back(block.clean[block.indexOf(0, t)]);
    }
  scan.timings = simulation.gradient()->timings();
  return scan;
}

} // namespace emeg
