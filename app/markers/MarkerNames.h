#pragma once

#include <string>

namespace emeg {

/// What the name of a marker says about where it comes from.
enum class MarkerOrigin {
  Unknown, ///< may be anything
  Scanner, ///< the scanner, by a name in common use
  Volume,  ///< the scanner, at every volume
  Slice,   ///< the scanner, at every slice
  Other    ///< certainly not the scanner: the clock, the heart, the recording program
};

/// Judges type and description together, as recording programs, scanners and converters write them: "R128",
/// "T  1", "Scanner", "Volume", "TR", "fMRI", "Response/R128". The amplifier's report that its clock follows
/// the scanner's ("SyncStatus/Sync On") comes as regularly as volumes do and is not the scanner's.
MarkerOrigin originOfMarker(const std::string& type, const std::string& description);

} // namespace emeg
