#pragma once

#include "artifacts/cardiac/BeatTimeBase.h"
#include "artifacts/cardiac/WarpFit.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Estimates the cardiac artifact of one channel after another from the heart pulses that all channels share.
/// Every interval between pulses is resampled onto a common time base by a smooth warp that is fitted to the
/// channel, epochs around each pulse are replaced by their projection on three principal components, and the
/// result is warped back: the idea of optimal basis sets (Niazy, Beckmann, Iannetti, Brady, Smith: Removal of
/// FMRI environment artifacts from EEG data using optimal basis sets, NeuroImage 28 (2005)) on a warped time
/// base.
class PulseModel {
public:
  /// `pulsePositions` in samples of the series, ascending. Fewer than three make an estimate of 0 everywhere.
  PulseModel(const std::vector<double>& pulsePositions, int32_t heartPeriod);
  PulseModel(const PulseModel&) = delete;
  PulseModel& operator=(const PulseModel&) = delete;

  /// Bytes that estimating a channel takes, however many channels there are.
  static uint64_t memoryFor(const std::vector<double>& pulsePositions, int32_t heartPeriod);

  /// Replaces the `length` samples of the channel's series by its artifact estimate; behind them stands one
  /// value, 0. In front of the first pulse and behind the last the series stays as it is.
  void replaceByEstimate(std::vector<double>& series, int64_t length);

  /// Of every channel so far.
  const std::vector<double>& channelWarps() const { return channelWarps_; }
  /// Epochs, and values of each; 0 without an estimate.
  int32_t nrOfEpochs() const { return hasBeats_ ? static_cast<int32_t>(base_.nrOfEpochs()) : 0; }
  int32_t epochLength() const { return hasBeats_ ? base_.epochLength() : 0; }

private:
  bool hasBeats_;
  BeatTimeBase base_;
  WarpFit warpFit_;
  std::vector<double> channelWarps_;
};

} // namespace emeg
