#pragma once

#include "app/correct/FoundScan.h"
#include "app/correct/HostAnswers.h"
#include "app/correct/KnownBeats.h"
#include "artifacts/cardiac/PulsePlausibility.h"
#include "engine/ChannelRole.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// A recording in microvolts as the converter reads it, and what it is to do with it.
struct ConverterJob {
  HostAnswers::Dialogue dialogue;
  std::vector<ChannelRole> roles; ///< one per channel of the CTC file
  double samplingFrequency = 0;   ///< Hz, exact: the CTC file's is rounded
  double seconds = 0;
  std::vector<double> lineFrequencies; ///< Hz, sinusoids to remove
  TimingRequest timing;
  BeatRequest beats;
  bool removeGradient = true;
  bool stopWithoutSequence = true; ///< do not look for heart beats when no scanner sequence was found
};

/// A channel's signal below 35 Hz, whose heart beat artifact is removed, before and after; only between the
/// first and the last pulse.
struct PulseChannelFigures {
  double rmsBefore = 0; ///< microvolts
  double rmsAfter = 0;
  double beatRmsBefore = 0; ///< RMS of the waveform averaged over all beats, microvolts
  double beatRmsAfter = 0;
};

/// What was found in a recording.
struct Findings {
  FoundScans timing;
  double beatsPerMinute = 0;
  std::vector<double> pulseTimes;  ///< seconds from the first sample
  std::vector<double> pulseDelays; ///< of known beats: seconds to the artifact, per channel as pulseFigures
  KnownPulses knownPulses;         ///< how known beats were made usable; their positions are pulseTimes
  std::optional<PulsePlausibility> plausibility; ///< of the pulses
  double pulseSampleRate = 0; ///< Hz, of what is told in samples of knownPulses and plausibility
  std::vector<PulseChannelFigures>
      pulseFigures; ///< per channel that takes part in pulses, in the converter's order
  bool pulseListIsFull = false;

  bool hasSequence() const { return !timing.scans.empty(); }
};

struct ConverterOutcome {
  bool finished = false;
  std::string outputPath; ///< the corrected CTC file
  std::vector<std::string> errors;
  Findings found;
};

/// Runs the converter of the plug-in. `log` gets its progress lines and may throw.
ConverterOutcome runConverter(const ConverterJob& job, const std::function<void(const std::string&)>& log);

/// What the converter appends to the input's name for these answers, with a subset of channels (0: all of
/// them) and an interval in milliseconds (nothing: the whole recording).
struct NamedSelection {
  int nrOfChannels = 0;
  bool hasInterval = false;
  double startMs = 0;
  double endMs = 0;
};
std::string outputSuffixOf(const HostAnswers::Dialogue& dialogue, const NamedSelection& selection);

} // namespace emeg
