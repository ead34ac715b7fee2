#pragma once

#include "files/exchange/Recording.h"

#include <cstdint>
#include <string>

namespace emeg {

enum class BrainVisionSamples { Int16, Uint16, Int32, Float32 };

int bytesPerSampleOf(BrainVisionSamples samples);

/// What a .vhdr file says.
struct BrainVisionHeader {
  std::string dataFile;   ///< name as written, "$b" replaced
  std::string markerFile; ///< empty: none
  bool vectorized = false;
  bool bigEndian = false;
  BrainVisionSamples samples = BrainVisionSamples::Int16;
  int64_t nrOfDataPoints = 0; ///< 0: not said
  /// Channels, sampling frequency, texts and warnings; no time points, markers or files yet.
  RecordingHeader recording;
};

/// Reads a header file. Throws RecordingError that names the section and the key.
BrainVisionHeader readBrainVisionHeader(const std::string& path);

/// The text of a header file for a recording that is stored as multiplexed 32-bit floats in microvolts (or a
/// channel's own unit).
std::string brainVisionHeaderText(const RecordingHeader& header, const std::string& dataFileName,
                                  const std::string& markerFileName);

} // namespace emeg
