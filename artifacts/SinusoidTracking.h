#pragma once

#include "dsp/RecordingStretch.h"

#include <cstdint>
#include <span>

namespace emeg {

/// Follows a sinusoid of known frequency, such as the mains, whose amplitude and phase change slowly: in
/// windows of eight seconds that overlap by half both are fitted (least squares with a Hann window), and
/// between their middles they are interpolated. A constant sinusoid is removed entirely; of the EEG what lies
/// within about an eighth of a hertz of it. Where a window holds less than half a turn nothing is removed.
///
/// Windows lie at fixed places of the recording: results do not depend on how it is cut.
class SinusoidTracker {
public:
  /// `frequency` and `rate` in Hz. std::invalid_argument where the frequency is not between 0 and half the
  /// rate.
  SinusoidTracker(double frequency, double rate);

  /// The positions that the input must hold for `outputs` of a recording of `recordingLength` samples.
  PositionRange inputFor(PositionRange outputs, int64_t recordingLength) const;

  /// Subtracts the sinusoid at the positions `outputs` from `samples` (one per position).
  /// std::invalid_argument if the stretch lacks samples that are needed.
  void subtract(const RecordingStretch& stretch, PositionRange outputs, std::span<double> samples) const;

private:
  struct Wave {
    double cosine = 0;
    double sine = 0;
  };
  Wave fit(const RecordingStretch& stretch, int64_t window) const;
  double phaseAt(int64_t position) const;

  double cyclesPerSample_;
  int64_t hop_; ///< samples from one window's middle to the next; the first lies at sample 0
};

} // namespace emeg
