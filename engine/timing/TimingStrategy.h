#pragma once

#include "artifacts/gradient/SplinedSignal.h"
#include "artifacts/gradient/timing/pauses/SequenceDetection.h"
#include "dsp/FFTWorkspace.h"
#include "engine/Observer.h"

#include <cstdint>
#include <optional>

namespace emeg {

/// The channel in which a whole-channel correction looks for the scanner's timing.
struct TimingQuestion {
  const SplinedSignal& channel; ///< above 1 Hz
  double samplingFrequency = 0;
  int32_t log2FftLength = 0;
  FFTWorkspace& workspace;
};

/// A way to the scanner's timing in one channel.
class TimingStrategy {
public:
  virtual ~TimingStrategy() = default;
  TimingStrategy() = default;
  TimingStrategy(const TimingStrategy&) = delete;
  TimingStrategy& operator=(const TimingStrategy&) = delete;

  /// Nothing where the channel does not show it: the next one is asked.
  virtual std::optional<MRSequence> find(const TimingQuestion& question, Observer& observer) = 0;
};

/// By the quiet between slices and between volumes (detectMRSequence).
class QuietRunsTiming : public TimingStrategy {
public:
  std::optional<MRSequence> find(const TimingQuestion& question, Observer& observer) override;
};

} // namespace emeg
