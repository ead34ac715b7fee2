#pragma once

#include "artifacts/gradient/SequenceDetection.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace emeg {

/// Frequencies that are compared, Hz.
struct FrequencyRange {
  double lowest = 1;
  double highest = 100;
};

/// What of a channel repeats with the volumes of a scan. Voltages in microvolts (RMS).
struct VolumeLockedPart {
  double sliceHarmonics = 0;  ///< lines at multiples of the slice frequency
  double volumeHarmonics = 0; ///< all other multiples of the volume frequency
  double background = 0;      ///< what the same number of lines half way between them hold: EEG and noise
  /// Power of all lines over that of the background: 1 when nothing repeats with the volumes.
  double lineToBackground = 0;
  /// The median of that over the multiples of the slice frequency: many of them stand out of the background
  /// in a scan, one or two where something else (the mains) happens to fit.
  double medianSliceToBackground = 0;

  /// Without what chance gives.
  double artifact() const;
};

/// Averages the signal of all channels over pairs of volumes, block by block. The average of a pair has lines
/// at the volume frequency's multiples (artifact, EEG, noise) and half way between them (EEG and noise
/// alone): what is left of the artifact can be told from EEG. Residual power at the slice and volume
/// frequencies as in Allen, Josephs, Turner: A method for removing imaging artifact from continuous EEG
/// recorded during functional MRI, NeuroImage 12 (2000), and Niazy, Beckmann, Iannetti, Brady, Smith: Removal
/// of FMRI environment artifacts from EEG data using optimal basis sets, NeuroImage 28 (2005).
class VolumeAverage {
public:
  VolumeAverage(const MRSequence& sequence, double samplingFrequency, int nrOfChannels);

  /// A stretch (seconds) that is corrected but not counted: another scan, or part of a volume.
  void addCorrectedStretch(double begin, double end) { correctedStretches_.emplace_back(begin, end); }

  /// The next time points, channel after channel.
  void add(int64_t count, std::span<const double> values);

  /// False without two whole pairs of volumes.
  bool isMeasurable() const;
  VolumeLockedPart partOf(int channel, const FrequencyRange& range) const;

  /// Median of the peak-to-peak values of all volumes, the "median imaging artifact" (Glaser, Beisteiner,
  /// Bauer, Fischmeister: FACET, a flexible artifact correction and evaluation toolbox for concurrently
  /// recorded EEG/fMRI data, BMC Neuroscience 14 (2013)). Microvolts.
  double medianImagingArtifact(int channel) const;
  /// Seconds outside the counted volumes and corrected stretches, in whole volumes, with more than half of
  /// that.
  double artifactSecondsOutside(int channel) const;

  /// Seconds by which the volumes come later (or earlier) in the second or last third of the scan than in the
  /// first, beside what the volume duration says; the larger of both.
  double drift(int channel) const;

private:
  static constexpr int nrOfParts = 3;
  struct Channel {
    std::vector<double> sums;                  ///< per phase of a pair
    std::vector<double> partSums;              ///< per phase of a volume, for each part of the scan
    std::vector<float> peakToPeaks;            ///< per counted volume
    std::vector<float> roughnesses, outside;   ///< mean steps, per counted volume and per other one
    double lowest = 0, highest = 0, steps = 0; ///< of the current volume
    double last = 0;                           ///< value
  };
  double inVolumes(int64_t position) const;
  int64_t volumeAt(int64_t position) const;
  void addStretch(int64_t first, int64_t end, int64_t count, std::span<const double> values);
  void endVolume();
  bool isCorrected(int64_t volume) const;
  std::vector<double> averageOf(const Channel& channel) const;

  MRSequence sequence_;
  double samplingFrequency_;
  int64_t nrOfPairs_;
  int nrOfPhases_, nrOfPartPhases_;
  std::vector<int64_t> counts_, partCounts_;
  std::array<double, nrOfParts> partOffsets_{}; ///< sum of the samples' places within their phases
  std::array<int64_t, nrOfParts> partLengths_{};
  std::vector<std::pair<double, double>> correctedStretches_;
  std::vector<Channel> channels_;
  std::vector<size_t> bins_, partBins_; ///< of the stretch that is being added
  int64_t position_ = 0;
  int64_t currentVolume_;
  int64_t samplesInVolume_ = 0;
};

} // namespace emeg
