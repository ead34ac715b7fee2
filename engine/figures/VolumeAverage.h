#pragma once

#include "engine/figures/FrequencyRange.h"
#include "engine/figures/VolumeGrid.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// What of a channel repeats with the volumes of a scan. Voltages in microvolts (RMS).
struct VolumeLockedPart {
  double sliceHarmonics = 0;  ///< lines at multiples of the slice frequency
  double volumeHarmonics = 0; ///< all other multiples of the volume frequency
  double background = 0;      ///< what the same number of lines half way between them hold: EEG and noise
  /// Power of all lines over that of the background: 1 when nothing repeats with the volumes.
  double lineToBackground = 0;
  /// The median of that over the multiples of the slice frequency: many of them stand out of the background
  /// in a scan, one or two where something else (the mains) happens to fit. 0 without such multiples.
  double medianSliceToBackground = 0;

  /// Without what chance gives.
  double artifact() const;
};

/// Averages one channel over pairs of a scan's volumes, stretch by stretch. The average of a pair has lines
/// at the volume frequency's multiples (artifact, EEG, noise) and half way between them (EEG and noise
/// alone): what is left of the artifact can be told from EEG. Residual power at the slice and volume
/// frequencies as in Allen, Josephs, Turner: A method for removing imaging artifact from continuous EEG
/// recorded during functional MRI, NeuroImage 12 (2000), and Niazy, Beckmann, Iannetti, Brady, Smith: Removal
/// of FMRI environment artifacts from EEG data using optimal basis sets, NeuroImage 28 (2005).
///
/// How the channel is cut into stretches changes no bit. Samples that are not finite count as 0. Memory: 8
/// bytes per phase of a pair (at most some 4000 per second of a volume) and, with drift, 24 bytes per sample
/// of a volume, from the scan's first sample to its last; 4 bytes per volume of the recording. Scans of 2 s
/// volumes at 5 kHz: 32 KB, 240 KB, 7 KB per hour.
class VolumeAverage {
public:
  enum class Drift { Ignored, Measured };

  /// `grid` must live as long. Samples are multiplied by `factor` to be microvolts.
  VolumeAverage(const VolumeGrid& grid, const FrequencyRange& range, double factor, Drift drift);

  /// The channel's next samples.
  void add(std::span<const double> samples);

  /// Of the scan, when its last sample was added. What is not measurable is 0.
  VolumeLockedPart volumeLocked() const { return isSummarised_ ? volumeLocked_ : volumeLockedNow(); }

  /// Median of the peak-to-peak values of all volumes, the "median imaging artifact" (Glaser, Beisteiner,
  /// Bauer, Fischmeister: FACET, a flexible artifact correction and evaluation toolbox for concurrently
  /// recorded EEG/fMRI data, BMC Neuroscience 14 (2013)). Microvolts.
  double medianImagingArtifact() const;

  /// Seconds outside the counted volumes and corrected stretches, in whole volumes, in which the signal is
  /// more than half as rough as in the median volume.
  double artifactSecondsOutside() const;

  /// Seconds by which the volumes come later (or earlier) in the second or last third of the scan than in the
  /// first, beside what the volume duration says; the larger of both. 0 with fewer than six volumes.
  double drift() const { return isSummarised_ ? drift_ : driftNow(); }

private:
  void beginVolume();
  void endVolume();
  void addToVolume(std::span<const double> samples);
  void addToAverages(std::span<const double> samples);
  void addBlock(std::span<const double> samples, int64_t first);
  double numberOf(double sample) const;
  void summarise();
  std::vector<double> pairAverage() const;
  std::vector<double> partAverage(size_t part) const;
  VolumeLockedPart volumeLockedNow() const;
  double driftNow() const;

  const VolumeGrid* grid_;
  FrequencyRange range_;
  double factor_;
  bool measuresDrift_;

  std::vector<double> pairSums_;                ///< per phase of a pair
  std::vector<double> partSums_;                ///< per phase of a volume, for each part of the scan
  std::vector<float> peakToPeaks_;              ///< per counted volume
  std::vector<float> roughnesses_, outside_;    ///< mean steps, per counted volume and per one outside
  double lowest_ = 0, highest_ = 0, steps_ = 0; ///< of the current volume
  double last_ = 0;                             ///< value
  int64_t position_ = 0, volumeBegin_ = 0, volumeEnd_ = 0;
  int64_t volume_ = 0;
  bool isSummarised_ = false;
  VolumeLockedPart volumeLocked_;
  double drift_ = 0;
};

} // namespace emeg
