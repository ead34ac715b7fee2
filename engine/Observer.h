#pragma once

#include "artifacts/gradient/timing/pauses/SequenceDetection.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace emeg {

struct FoundBeats;

/// A part of a correction that takes time.
enum class Step {
  TakingIn,           ///< samples go into the store
  FindingScans,       ///< the scanner's timing
  CorrectingChannel,  ///< one channel, all stages
  CorrectingForBeats, ///< one channel, the stages before the search for heart beats
  FindingBeats,
  RemovingBeats, ///< one channel, the stages behind it
  Correcting     ///< all channels, stretch after stretch
};

/// Somebody wants the correction to end. It leaves nothing behind but what its store holds.
class Cancelled : public std::runtime_error {
public:
  Cancelled() : std::runtime_error("the correction was cancelled") {}
};

/// Is told what a correction does and finds, and is asked what only its user knows. Everything has a default
/// that says nothing. Any of these may throw, which ends the correction; Cancelled says that it was wanted.
class Observer {
public:
  virtual ~Observer() = default;
  Observer() = default;
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  /// A step begins; `channel` is the store's, or -1.
  virtual void stepBegins(Step, int /*channel*/) {}
  /// The finished part of the step, 0 ... 1. Called often: the place to look whether the user gave up.
  virtual void progress(double) {}
  /// What a search compares and finds, a line for whoever wants to follow it.
  virtual void detail(const std::string&) {}

  /// So many samples of a channel are no numbers and were taken as 0.
  virtual void notFiniteFound(int /*channel*/, int64_t /*count*/) {}
  /// A channel has samples at the limits of its integers, which are replaced.
  virtual void saturationFound(int /*channel*/) {}
  /// The scanner's timing was found in whole-channel corrections.
  virtual void sequenceFound(const MRSequence&) {}
  /// The half-length of the averaging window in slices.
  virtual int windowFor(double /*slicesPerSecond*/, int proposed) { return proposed; }
  virtual void heartPeriodFound(double /*beatsPerMinute*/) {}
  /// `rate` (Hz) is that of the samples in which the beats are told.
  virtual void beatsFound(const FoundBeats&, float /*rate*/) {}
  /// The heart beat model of the last channel is done: channels, samples of the series, epochs and their
  /// length.
  virtual void beatModelsMade(int /*channels*/, int64_t /*length*/, int /*epochs*/, int /*epochLength*/) {}
  /// So many bytes are about to be allocated for one purpose; throws where that cannot be.
  virtual void memoryNeeded(uint64_t) {}
};

} // namespace emeg
