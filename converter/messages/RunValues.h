#pragma once

#include <string>

namespace emeg {

/// Values of one run that every floor above reads.
struct RunValues {
  double samplingFrequency = 0; ///< Hz; divided by the decimation factor after the correction
  double samplingInterval = 0;  ///< seconds per sample
  float intervalStartMs = 0;
  float intervalEndMs = 0;
  std::string outputSuffix; ///< what buildOutputName made of the options, such as "_GRA"
};

/// A path from which other names are made by replacing its last four characters (".ctc").
struct PathBuffer {
  std::string path;

  std::string withEnding(const std::string& ending) const {
    return path.substr(0, path.size() < 4 ? 0 : path.size() - 4) + ending;
  }
};

/// The part of a path behind its last '/' or '\\'.
inline std::string namePartOf(const std::string& path) {
  const size_t separator = path.find_last_of("/\\");
  return separator == std::string::npos ? path : path.substr(separator + 1);
}

} // namespace emeg
