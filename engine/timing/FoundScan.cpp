#include "engine/timing/FoundScan.h"

#include <algorithm>

namespace emeg {

size_t FoundScans::indexOfLongest() const {
  const auto longest = std::max_element(scans.begin(), scans.end(), [](const auto& a, const auto& b) {
    return a.sequence.nrOfVolumes < b.sequence.nrOfVolumes;
  });
  return static_cast<size_t>(longest - scans.begin());
}

const FoundScan& FoundScans::longest() const {
  return scans[indexOfLongest()];
}

} // namespace emeg
