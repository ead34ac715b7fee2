#pragma once

#include "dsp/OutputInstants.h"
#include "dsp/RecordingStretch.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// Changes the sampling rate by any ratio, up or down, with a Kaiser-windowed sinc that is evaluated at the
/// outputs' instants (output 0 at the first sample of the recording). Let r be the lower one of the two
/// rates: frequencies up to 0.4 r pass within 0.05 dB, those from 0.5 r on are 80 dB down, as are images and
/// aliases of theirs. No delay. Equal rates copy. (Crochiere, Rabiner: Multirate Digital Signal Processing,
/// 1983.)
///
/// A constant stays the same to rounding. Beyond the ends the signal continues as RecordingStretch says. An
/// output has the same bits however the recording is cut. It costs 57 oldRate/r multiplications with taps
/// from a table of at most 8 MB; where the rates' common measure is too small for that, three times as many
/// operations for taps that are interpolated (error of the output below -120 dB).
class Resampler {
public:
  /// std::invalid_argument as OutputInstants.
  Resampler(double oldRate, double newRate);

  /// Longest recording that is taken, in samples.
  static constexpr int64_t longestRecording = int64_t{1} << 42;

  /// Number of outputs of a whole recording, floor((n - 1) x newRate / oldRate) + 1; 0 for none.
  /// std::invalid_argument below 0 or above longestRecording.
  int64_t outputLength(int64_t recordingLength) const;

  /// Samples on each side of an output's instant that it is made of.
  int64_t context() const { return halfTaps_; }

  /// The outputs whose instants lie at or behind sample stretch.begin and before stretch.end, both at least
  /// 0: stretches that make up a recording have every output once.
  PositionRange outputsIn(PositionRange stretch, int64_t recordingLength) const;

  /// The positions that the input must hold for `outputs`.
  PositionRange inputFor(PositionRange outputs, int64_t recordingLength) const;

  /// Outputs outputs.begin ... outputs.end - 1 to `out`. `in` holds at least inputFor(outputs,
  /// in.recordingLength). std::invalid_argument if something is missing.
  void apply(const RecordingStretch& in, PositionRange outputs, std::span<double> out) const;

  /// A whole recording at once; nothing becomes nothing.
  std::vector<double> apply(std::span<const double> recording) const;

private:
  void tabulateTaps(double oldRate, double newRate);
  void tabulateKernel(double oldRate, double newRate);
  double kernelAt(double distance) const;
  /// The taps of an output: from the table, or interpolated into `work`.
  const double* tapsFor(const OutputInstant& instant, std::span<double> work) const;

  OutputInstants instants_;
  /// An output is made of samples whole - halfTaps + 1 ... whole + halfTaps.
  int64_t halfTaps_ = 0;
  /// 2 halfTaps_ taps for every phase; or none.
  std::vector<double> taps_;
  /// The kernel at multiples of 1/kernelStepsPerSample_ of a sample from its middle on; or nothing.
  std::vector<double> kernel_;
  double kernelStepsPerSample_ = 0;
  double kernelEnd_ = 0;
};

} // namespace emeg
