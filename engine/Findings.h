#pragma once

#include "artifacts/cardiac/known/KnownPulses.h"
#include "artifacts/cardiac/search/PulsePlausibility.h"
#include "artifacts/gradient/timing/choice/TimingChoice.h"

#include "engine/figures/ChannelQuality.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// One scan of a recording, times in seconds from the first corrected sample.
struct FoundScan {
  MRSequence sequence; ///< its whole volumes
  double begin = 0;    ///< of its activity
  double end = 0;
  int32_t partsBefore = 0; ///< 1: the end of a volume comes before the first whole one, and is corrected, too
  int32_t partsBehind = 0; ///< 1: the beginning of one comes behind the last
  bool isCountIdentifiable = true; ///< false: all slices are alike, so that counts are a choice
  int32_t nrOfChannelsAgreeing = 1;
  int32_t nrOfChannelsAsked = 1;
};

/// The scans of a recording and how their timing was found.
struct FoundScans {
  std::vector<FoundScan> scans; ///< in ascending order of time
  TimingSource source = TimingSource::None;
  std::string doubt;              ///< why the quiet between slices was not believed, a phrase
  TimingEvidence evidence;        ///< for what was chosen
  bool slicesDoNotRepeat = false; ///< volumes were averaged although slices were asked for
  double slicesLeaveDb = 0;       ///< by how much slices would have left more

  /// The one with most volumes; there is one.
  const FoundScan& longest() const;
  size_t indexOfLongest() const;
};

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
