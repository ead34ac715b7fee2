#pragma once

#include "engine/Findings.h"
#include "engine/RecordingShape.h"

#include <cstddef>
#include <vector>

namespace emeg {

/// What speaks against the timing of scans, or against the removal of their artifact.
enum class ScanDoubtKind {
  // Of all scans together.
  SlicesDoNotRepeat, ///< measured: dB that averaged slices would have left more than averaged volumes
  VolumesUnlike,     ///< measured: share of the power that volumes of a given timing do not have in common

  // Of one scan.
  BeyondRecording, ///< where: its volumes would last from far in front of the recording or far behind it
  SlicesNotTaken,  ///< measured: number of slices that was given and does not fit
  LongSlices,      ///< measured: seconds between markers that were said to be those of slices
  TooFewVolumes,   ///< measured: how many
  Drift,           ///< measured: seconds by which volumes come late (negative: early) in a part of it
  ScanOutside,     ///< measured: seconds outside all scans that look like scan; told of the longest one
  ArtifactGrew,    ///< channels
  ArtifactStayed   ///< channels: more than half of its amplitude
};

/// A doubt with its numbers; those that its kind does not name are 0 or empty.
struct ScanDoubt {
  ScanDoubtKind kind = ScanDoubtKind::SlicesDoNotRepeat;
  size_t scan = 0; ///< its number, from 0 on
  double measured = 0;
  Stretch where;
  std::vector<size_t> channels; ///< their places among the channels that were corrected
};

/// All doubts about the scans of `found`, which were looked for as `request` says: those of all together,
/// then scan after scan in the order of their kinds. Where scans were not measured, figures raise none.
std::vector<ScanDoubt> doubtsAboutScans(const Findings& found, const TimingRequest& request,
                                        const RecordingShape& shape);

} // namespace emeg
