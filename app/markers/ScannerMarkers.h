#pragma once

#include "artifacts/gradient/timing/markers/MarkerTiming.h"
#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// Markers of one name that are likely the scanner's.
struct ScannerMarkers {
  std::string name; ///< selects exactly these markers (onsetsOfMarkers)
  MarkerKind kind = MarkerKind::Volume;
  bool hasKnownName = false; ///< else the interval alone speaks for them
  double interval = 0;       ///< seconds
  int64_t nrOfMarkers = 0;
  int64_t nrOfMissing = 0;   ///< within stretches; a pause after every volume's slices is none
  int64_t nrOfStray = 0;     ///< out of step, or two at one place
  int64_t nrOfStretches = 0; ///< of volume markers without a pause: scans; 1 for slice markers
};

/// Which markers are most likely the scanner's: at most one name for its volumes and one for its slices. They
/// come at equal intervals, some may be missing or doubled; a name in common use makes them likelier, and
/// where such a one is there, no other is guessed. Markers more often than every 0.3 s are slices unless
/// their name says otherwise.
std::vector<ScannerMarkers> guessScannerMarkers(const RecordingHeader& header);

} // namespace emeg
