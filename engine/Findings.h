#pragma once

#include "artifacts/cardiac/known/KnownPulses.h"
#include "artifacts/cardiac/search/PulsePlausibility.h"
#include "engine/figures/ChannelQuality.h"
#include "engine/timing/FoundScan.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace emeg {

/// A stretch in seconds from the first corrected sample.
struct Stretch {
  double start = 0;
  double end = 0;
  double seconds() const { return end - start; }
};

/// A channel's signal below 35 Hz, whose heart beat artifact is removed, before and after; only where beats
/// are modelled.
struct PulseChannelFigures {
  double rmsBefore = 0; ///< microvolts
  double rmsAfter = 0;
  double beatRmsBefore = 0; ///< RMS of the waveform averaged over all beats, microvolts
  double beatRmsAfter = 0;
};

/// A channel whose samples at the limits of its integers were replaced.
struct RepairedChannel {
  int channel = 0;
  int64_t nrOfRepaired = 0;
  int64_t nrOfLeft = 0; ///< in front of the first or behind the last usable sample: they stay
};

/// What was found in a recording.
struct Findings {
  int64_t nrOfNotFinite = 0; ///< samples that are no numbers, taken as 0
  std::vector<RepairedChannel> repaired;

  FoundScans timing;

  /// Figures of merit per scan, complete when the correction is; nothing where a scan is too short to tell.
  /// Channels in the recording's order, without those that pass unchanged.
  std::vector<std::optional<QualityFigures>> quality;

  double beatsPerMinute = 0;
  std::vector<double> pulseTimes;  ///< seconds from the first corrected sample
  std::vector<double> pulseDelays; ///< of known beats: seconds to the artifact, per channel as pulseFigures
  KnownPulses knownPulses;         ///< how known beats were made usable; their positions are pulseTimes
  std::optional<PulsePlausibility> plausibility; ///< of the pulses
  double pulseSampleRate = 0; ///< Hz, of what is told in samples of knownPulses and plausibility
  std::vector<PulseChannelFigures> pulseFigures; ///< per channel with heart beats to remove, in their order
  std::vector<Stretch> withoutModel;             ///< where the heart beat artifact, if there is one, is left
  bool pulseListIsFull = false;

  bool hasSequence() const { return !timing.scans.empty(); }
};

} // namespace emeg
