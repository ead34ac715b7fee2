#pragma once

#include "artifacts/gradient/timing/choice/TimingChoice.h"
#include "engine/figures/FrequencyRange.h"
#include "engine/figures/SpectralFigures.h"
#include "engine/figures/VolumeAverage.h"

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

/// Figures of all corrected channels, in their order.
struct QualityFigures {
  FrequencyRange range;
  std::vector<ChannelQuality> channels;
  double drift = 0; ///< seconds; median of up to seven witnesses (see witnessesOf)
  /// Seconds of artifact outside all scans; median of the same witnesses.
  double artifactSecondsOutside = 0;
};

/// Whether what was detected repeats in the signal at all. Noise has rhythms of its own in which the quiet
/// between slices may be seen; a scan's lines stand far above what lies between them, in one channel at
/// least. Where the timing comes from elsewhere (it is then confirmed by the similarity of volumes), and
/// without figures (null), the benefit of the doubt. False without any timing.
bool looksLikeScan(TimingSource source, const QualityFigures* figures);

/// Which channels can tell what goes on in the whole scan: those that are expected to show it (`showsScan`,
/// per channel; of all where none of them is alive), that are not flat, and in which its lines hold nearly as
/// large a share of their power as in the best one. A dead electrode with mains in it is none, nor a noisy
/// one where there are others. Channel numbers, ascending.
std::vector<size_t> witnessesOf(const std::vector<ChannelQuality>& channels,
                                const std::vector<bool>& showsScan);

} // namespace emeg
