#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// One channel below some 35 Hz at about 250 Hz, made while its samples come in: a low-pass whose delay is
/// taken out, and of the result every step()-th sample, from the first sample of the recording on. Beyond the
/// ends the signal continues as RecordingStretch says. The outputs' bits do not depend on the lengths of the
/// blocks.
///
/// Low-pass (Kaiser-windowed sinc of 0.54 s for 35 Hz): within 0.1 dB up to 6/7 of the edge (30 Hz), 6 dB
/// down at the edge, 80 dB down from 8/7 of it (40 Hz) on, aliases included. Where the recording holds
/// nothing above that frequency (sampled at 80 Hz or less, for 35 Hz), the samples are taken as they are.
///
/// Memory: five times the filter's length, or 12288 samples and twice its length. A sample that is not a
/// number spoils the outputs within half the filter's length.
class BandlimitedDecimator {
public:
  /// `rate` of the samples and low-pass `edge` in Hz. std::invalid_argument for rates that are not positive
  /// finite numbers of at most 1 MHz, and edges below rate/100000 or above 100 Hz (which 250 Hz could not
  /// hold).
  explicit BandlimitedDecimator(double rate, double edge = 35);

  /// Samples per output: floor(rate / 250), at least 1.
  int64_t step() const { return step_; }
  /// Rate of the outputs in Hz.
  double outputRate() const { return rate_ / static_cast<double>(step_); }
  /// Samples on each side of an output that it is made of.
  int64_t halfLength() const { return static_cast<int64_t>(taps_.size()) / 2; }

  /// The recording's next samples. Outputs that they complete are appended to `out`.
  void add(std::span<const double> samples, std::vector<double>& out);

  /// The recording ends here: the outputs that are left are appended to `out`; then as new, for another
  /// channel. n samples in all make ceil(n / step()) outputs.
  void finish(std::vector<double>& out);

private:
  void makeOutputs(int64_t end, int64_t recordingLength, std::vector<double>& out);
  void forgetSamples();

  double rate_;
  int64_t step_;
  std::vector<double> taps_;
  /// The latest samples; the first of them is number keptFrom_ of the recording.
  std::vector<double> kept_;
  int64_t keptFrom_ = 0;
  /// Position of the next output.
  int64_t next_ = 0;
  std::vector<double> window_;
};

} // namespace emeg
