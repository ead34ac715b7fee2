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

} // namespace emeg
