#pragma once

#include "artifacts/gradient/SplinedSignal.h"
#include "artifacts/gradient/timing/pauses/LogLine.h"

#include <cstdint>

namespace emeg {

class FFTWorkspace;

/// Timing of the scanner's acquisition as it shows in the recording.
struct MRSequence {
  int32_t nrOfVolumes = 0;
  int32_t nrOfSlicesPerVolume = 0;
  double volumeDuration = 0;   ///< seconds
  double sliceDuration = 0;    ///< seconds; 0: not (yet) detected
  double firstTriggerTime = 0; ///< seconds from the start of the processed interval
  double windowHalfLength = 0; ///< half-width of the averaging window, seconds
  bool hasVolumeGaps = false;  ///< quiet between volumes; false: continuous acquisition

  /// Onset in samples of slice `slice` of volume `volume`, a real number.
  double onsetOf(int64_t volume, int64_t slice, double samplingFrequency) const {
    return (static_cast<double>(volume) * volumeDuration + firstTriggerTime +
            static_cast<double>(slice) * sliceDuration) *
           samplingFrequency;
  }
};

/// The averaging window of so many slices to either side, in whole seconds (rounded up).
int32_t windowHalfLengthOf(const MRSequence& sequence, int32_t slices);

/// Finds volumes, slices and their durations in one channel whose signal is dominated by the gradient bursts
/// of the slices: quiet runs between bursts are found in the signal's envelope above 100 Hz, their lengths
/// tell slice gaps from volume gaps, and bursts are aligned with sub-sample precision through the signal's
/// spline.
///
/// `signal` is the channel over the processed interval; transforms have 2^log2FftLength points (at least as
/// many as there are samples). `windowHalfLength` is left 0. When no sequence is found every count and
/// duration is 0.
///
/// Methods in the spirit of Allen, Josephs, Turner: A method for removing imaging artifact from continuous
/// EEG recorded during functional MRI, NeuroImage 12 (2000), without their trigger channel.
MRSequence detectMRSequence(const SplinedSignal& signal, double samplingFrequency, int32_t log2FftLength,
                            FFTWorkspace& workspace, const LogLine& log);

} // namespace emeg
