#pragma once

#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include <functional>
#include <span>
#include <vector>

namespace emeg {

/// What one channel holds.
using ScanFinder = std::function<std::vector<ScanSegment>(std::span<const double> channel)>;

/// Asks up to `largestNrOfChannels` channels, evenly spread, one at a time. A flat channel (dead, unplugged)
/// has nothing to say: the ones behind it are asked in its place. One list of scans per channel that was
/// asked.
std::vector<std::vector<ScanSegment>> scansOfChannels(const ChannelReader& read, int nrOfChannels,
                                                      int largestNrOfChannels, const ScanFinder& find);

} // namespace emeg
