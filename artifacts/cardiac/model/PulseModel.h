#pragma once

#include "artifacts/cardiac/model/BeatModelSettings.h"
#include "artifacts/cardiac/model/BeatStretches.h"
#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/WarpFit.h"

#include <cstdint>
#include <vector>

namespace emeg {

/// Estimates the cardiac artifact of one channel after another from the heart pulses that all channels share.
/// Every interval between pulses is resampled onto a common time base by a smooth warp that is fitted to the
/// channel, epochs around each pulse are replaced by their projection on three principal components, and the
/// result is warped back: the idea of optimal basis sets (Niazy, Beckmann, Iannetti, Brady, Smith: Removal of
/// FMRI environment artifacts from EEG data using optimal basis sets, NeuroImage 28 (2005)) on a warped time
/// base.
///
/// Immutable once made: threads may share one model, each with a channel of its own.
class PulseModel {
public:
  /// `pulsePositions` in samples of the series, ascending. Fewer than three make an estimate of 0 everywhere.
  /// With `settings.keepOutside` they are rounded to whole samples, and those that coincide count once.
  PulseModel(const std::vector<double>& pulsePositions, int32_t heartPeriod,
             const BeatModelSettings& settings = {});
  PulseModel(const PulseModel&) = delete;
  PulseModel& operator=(const PulseModel&) = delete;

  /// Bytes that estimating a channel takes, however many channels there are; as much again for every further
  /// thread.
  static uint64_t memoryFor(const std::vector<double>& pulsePositions, int32_t heartPeriod,
                            const BeatModelSettings& settings = {});

  /// Replaces the `length` samples of the channel's series by its artifact estimate; behind them stands one
  /// value, 0. In front of the first pulse and behind the last the series stays as it is, unless the settings
  /// say otherwise. Returns the channel's warp parameter: how far into an interval a change of its length is
  /// absorbed, 0 to 1.
  double replaceByEstimate(std::vector<double>& series, int64_t length) const;

  /// The samples that the model explains, in ascending order: all that lies between is estimated as 0 with
  /// `keepOutside`, and taken for the artifact itself otherwise.
  std::vector<PositionRange> modelledStretches(int64_t length) const;

  /// Values of one interval on the common time base.
  int32_t modelLength() const { return base_.modelLength; }
  /// Epochs, and values of each; 0 without an estimate.
  int32_t nrOfEpochs() const;
  int32_t epochLength() const { return hasBeats_ ? base_.epochLength() : 0; }

private:
  void estimateFromPulseToPulse(double a, std::vector<double>& series, int64_t length) const;

  BeatModelSettings settings_;
  std::vector<double> pulses_;
  bool hasBeats_;
  std::vector<BeatStretch> stretches_; ///< with keepOutside
  BeatTimeBase base_;
  BeatTimeBase fitBase_; ///< what the warp is fitted to
  WarpFit warpFit_;
};

} // namespace emeg
