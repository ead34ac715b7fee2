#pragma once

#include "artifacts/gradient/ScanSegment.h"
#include "engine/Findings.h"
#include "engine/Observer.h"
#include "engine/store/CachedChannels.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// The scans of a recording, as findings (seconds) and as the correction takes them (samples).
struct TimedScans {
  FoundScans found;
  std::vector<ScanSegment> segments; ///< empty where nothing was found
  bool volumeWise = true;            ///< how they are averaged, whatever was asked for
};

/// Finds the scans: from markers or durations where they are given, else by the quiet between slices where
/// that is not in doubt, else by the similarity of volumes. `channels` are those that may show the scan.
/// What was found blind and does not stand out of the EEG in any of them is no scan.
TimedScans findScans(CachedChannels& recording, const std::vector<int>& channels, int64_t nrOfSamples,
                     double samplingFrequency, const TimingRequest& request, Observer& observer);

/// Bytes that the search takes beside what the recording's cache holds.
uint64_t memoryForScanSearch(int64_t nrOfSamples);

} // namespace emeg
