#pragma once

#include "artifacts/gradient/timing/choice/TimingChoice.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace emeg {

/// One scan of a recording, times in seconds from the first corrected sample. Inside the correction it is a
/// ScanSegment, in samples.
struct FoundScan {
  MRSequence sequence; ///< its whole volumes
  double begin = 0;    ///< of its activity: parts of volumes may come before the first and behind the last
  double end = 0;      ///< whole one
  int32_t partsBefore = 0; ///< 1: the end of a volume comes before the first whole one, and is corrected, too
  int32_t partsBehind = 0; ///< 1: the beginning of one comes behind the last
  bool isCountIdentifiable = true; ///< false: all slices are alike, so that counts are a choice
  int32_t nrOfChannelsAgreeing = 1;
  int32_t nrOfChannelsAsked = 1;
};

/// The scans of a recording and how their timing was found.
struct FoundScans {
  std::vector<FoundScan> scans; ///< in ascending order of time
  TimingSource source = TimingSource::None;
  std::string doubt;              ///< why the quiet between slices was not believed, a phrase
  TimingEvidence evidence;        ///< for what was chosen
  bool slicesDoNotRepeat = false; ///< volumes were averaged although slices were asked for
  double slicesLeaveDb = 0;       ///< by how much slices would have left more

  /// The one with most volumes; there is one.
  const FoundScan& longest() const;
  size_t indexOfLongest() const;
};

} // namespace emeg
