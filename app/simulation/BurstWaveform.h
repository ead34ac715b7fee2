#pragma once

#include "app/simulation/SimulationParameters.h"

#include <vector>

namespace emeg {

/// The artifact of one slice's gradients as it leaves the amplifier, as a function of real time: sinusoids
/// (slice selection and spoilers at low frequencies, the readout) under one smooth window, each weighted with
/// the amplifier's low-pass. The waveform integrates to zero, is zero outside its duration, and its spectrum
/// is negligible above 0.45 times the sampling frequency, so that any shift by a part of a sample can be
/// undone by interpolation.
class BurstWaveform {
public:
  enum class Slice { Ordinary, First };

  BurstWaveform(const GradientParameters& parameters, double samplingFrequency);

  /// Microvolts at `time` seconds after the slice's onset. An ordinary slice peaks at the parameters' peakUv.
  double value(Slice slice, double time) const;

  /// Standard deviation (s) of the Gaussian that rounds the window's edges.
  static double edgeDuration(const GradientParameters& parameters, double samplingFrequency);
  /// Seconds of the window between its half-height points; not positive when the burst is too short for edges
  /// that keep the spectrum below 0.45 times the sampling frequency.
  static double plateauDuration(const GradientParameters& parameters, double samplingFrequency);

private:
  struct Sinusoid {
    double angularFrequency; ///< rad/s
    double amplitude;        ///< microvolts
    double phase;            ///< rad at the centre of the burst
  };
  struct Sum {
    std::vector<Sinusoid> sinusoids;
    double pedestal = 0; ///< constant under the window that makes the integral zero
  };

  double window(double fromCentre) const;
  double valueOf(const Sum& sum, double fromCentre) const;
  double pedestalOf(const std::vector<Sinusoid>& sinusoids) const;
  double rms(const Sum& sum) const;
  double peak(const Sum& sum) const;

  double duration_;
  double edge_;
  double plateau_;
  Sum ordinary_;
  Sum first_;
};

} // namespace emeg
