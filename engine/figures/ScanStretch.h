#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

namespace emeg {

/// A scan whose correction is to be measured. Times in seconds from the recording's first sample.
struct ScanStretch {
  MRSequence sequence; ///< its whole volumes
  double begin = 0;    ///< of what is corrected: parts of volumes may come before the first and behind the
  double end = 0;      ///< last whole one
};

/// Frequencies that are compared, Hz.
struct FrequencyRange {
  double lowest = 1;
  double highest = 100;
};

} // namespace emeg
