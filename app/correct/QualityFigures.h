#pragma once

#include "app/correct/CorrectionPlan.h"
#include "app/correct/FoundScan.h"
#include "app/correct/SpectralFigures.h"
#include "app/correct/VolumeLocked.h"

#include <functional>
#include <optional>
#include <vector>

namespace emeg {

/// Figures of merit of one corrected channel, from the scan's stretch of the recording.
struct ChannelQuality {
  VolumeLockedPart before, after;
  double medianImagingArtifactBefore = 0; ///< microvolts, peak to peak
  double medianImagingArtifactAfter = 0;
  BandPowers bandsBefore{}, bandsAfter{}; ///< square microvolts
  SlicePeaks peaksBefore, peaksAfter;

  /// RMS of the artifact in microvolts: what repeats with the volumes or what stands out at the slice
  /// frequency's multiples, whichever is more.
  double artifactBefore() const;
  double artifactAfter() const;
  /// What is left of the artifact's amplitude, 0 ... 1; more than 1 when it grew.
  double remaining() const;
  /// Whether what is left stands out of the EEG.
  bool isVisible() const;
};

/// Figures of all corrected channels, in the converter's order.
struct QualityFigures {
  FrequencyRange range;
  std::vector<ChannelQuality> channels;
  double drift = 0;                  ///< seconds, of the channel in which the sequence was found
  double artifactSecondsOutside = 0; ///< seconds of artifact outside all scans, in that channel
};

/// Compares one scan of the recording with its corrected version; both recordings hold the corrected channels
/// alone. Scaling is taken back. Nothing where the scan is too short to tell (fewer than four volumes).
std::optional<QualityFigures> measureQuality(RecordingReader& before, RecordingReader& after,
                                             const CorrectionPlan& plan, const std::vector<FoundScan>& scans,
                                             size_t scan, const std::function<void(double)>& progress);

} // namespace emeg
