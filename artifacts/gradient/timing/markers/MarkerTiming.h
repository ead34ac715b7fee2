#pragma once

#include "artifacts/gradient/ScanSegment.h"
#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// What a scanner's markers stand for.
enum class MarkerKind { Volume, Slice };

/// Markers at equal distances: repeat v lies at onset + v x interval. Samples, real numbers.
struct MarkerLine {
  double onset = 0;
  double interval = 0;
  int64_t nrOfRepeats = 0; ///< from the first to the last marker, missing ones included
  int64_t nrOfMarkers = 0; ///< that lie on the line
  int64_t nrOfMissing = 0;
  int64_t nrOfStray = 0; ///< markers of the same stretch that lie off it, or twice at the same place
};

/// Robust straight lines through markers (sample positions in any order): quantised to samples, some missing,
/// doubled or stray. The commonest distance between markers is the interval. A pause (longer than
/// `longestGap` intervals, or one behind which markers are out of step) begins another line. Lines of fewer
/// than three markers are no lines.
std::vector<MarkerLine> fitMarkerLines(std::span<const double> markers, double longestGap = 20);

/// Scans from markers, refined on the waveform of one channel: the line tells volumes, the channel when
/// exactly they come, how many slices a volume has and how far apart they are. `nrOfSlicesPerVolume` 0: found
/// in the channel. Slice markers are gathered into volumes by their dead time, by how the first slice
/// differs, or else by `nrOfSlicesPerVolume`.
std::vector<ScanSegment> scansFromMarkers(std::span<const double> channel, double samplingFrequency,
                                          std::span<const double> markers, MarkerKind kind,
                                          int32_t nrOfSlicesPerVolume = 0);

/// The same from up to `largestNrOfChannels` channels, evenly spread, one at a time, which vote as in blind
/// detection: neither a dead channel nor a spoilt one among them matters.
std::vector<ScanSegment> scansFromMarkersInChannels(const ChannelReader& read, int nrOfChannels,
                                                    double samplingFrequency, std::span<const double> markers,
                                                    MarkerKind kind, int32_t nrOfSlicesPerVolume = 0,
                                                    int largestNrOfChannels = 3);

} // namespace emeg
