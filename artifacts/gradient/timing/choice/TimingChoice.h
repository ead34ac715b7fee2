#pragma once

#include "artifacts/gradient/timing/choice/TimingEvidence.h"
#include "artifacts/gradient/timing/markers/MarkerTiming.h"
#include "artifacts/gradient/timing/volumes/ScanDetection.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// What is known of the scans before a sample is looked at, and how they are to be averaged. Nothing is known
/// by default.
struct TimingRequest {
  GivenTiming given;
  std::vector<double> markers; ///< onsets in samples of the channels
  std::optional<MarkerKind> markerKind;
  bool volumeWise = true;
  int32_t windowSlices = 150;

  bool isBlind() const { return !markerKind && given.volumeDuration <= 0; }
};

/// Where a timing comes from.
enum class TimingSource {
  None,
  QuietBetweenSlices,
  SimilarVolumes,
  VolumeMarkers,
  SliceMarkers,
  GivenTiming
};

/// "quiet between slices", "similar volumes", "volume markers", "slice markers", "given timing".
std::string nameOf(TimingSource source);

struct TimingChoice {
  TimingSource source = TimingSource::None;
  std::vector<ScanSegment> scans; ///< empty with `None`; with `QuietBetweenSlices` the sequence's own
  std::string doubt;              ///< why the first detection was not believed, a phrase; else empty
  TimingEvidence evidence;        ///< median of the channels that were asked

  /// Slice-wise averaging was asked for and leaves clearly more than volume-wise averaging.
  bool slicesDoNotRepeat = false;
  double slicesLeaveDb = 0; ///< by how much; measured only when it is in doubt
};

/// Decides whose timing is used. Given markers or durations come first. Else the sequence that was found by
/// the quiet between slices stands when it is plausible, its volumes and slices are alike and nothing goes on
/// outside; where that is in doubt, scans are looked for by the similarity of their volumes, and those are
/// taken that explain clearly more. `found` counts from the channels' first sample. `log` is told the steps
/// and may throw.
TimingChoice chooseTiming(const MRSequence& found, const TimingRequest& request, const ChannelReader& read,
                          int nrOfChannels, double samplingFrequency,
                          const std::function<void(const std::string&)>& log);

} // namespace emeg
