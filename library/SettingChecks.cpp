#include "library/SettingChecks.h"

#include "library/Guarded.h"
#include "library/SettingByName.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

constexpr double largestIncrease = 10; // of the sampling frequency

void demand(bool isFine, const std::string& message) {
  if (!isFine) throw Refusal(EMEG_BAD_SETTING, message);
}

/// Highest frequency that both the recording and the result can hold.
double nyquistOf(const CorrectionSettings& settings, const RecordingShape& shape) {
  const double recorded = shape.samplingFrequency;
  return (settings.rate > 0 ? std::min(settings.rate, recorded) : recorded) / 2;
}

void checkFilters(const CorrectionSettings& settings, double nyquist) {
  const auto checkEdge = [nyquist](const char* name, double hz) {
    demand(hz >= 0 && hz < nyquist, std::string("The setting \"") + name + "\" has an edge at " + textOf(hz) +
                                        " Hz; it must lie between 0 and " + textOf(nyquist) + " Hz.");
  };
  checkEdge("high-pass", settings.highPass);
  checkEdge("low-pass", settings.lowPass);
  for (const Notch& notch : settings.notches) {
    demand(notch.width > 0 && notch.frequency - notch.width / 2 > 0,
           "The setting \"notch\" must begin above 0 Hz and be wider than 0.");
    checkEdge("notch", notch.frequency + notch.width / 2);
  }
  for (const double hz : settings.lineNoise) {
    demand(hz > 0, "The setting \"line-noise\" must be above 0 Hz.");
    checkEdge("line-noise", hz);
  }
  demand(settings.highPass <= 0 || settings.lowPass <= 0 || settings.highPass < settings.lowPass,
         "The settings \"high-pass\" and \"low-pass\" leave no frequency.");
}

void checkTiming(const TimingRequest& timing, double seconds) {
  constexpr double fewestVolumes = 3;
  demand(timing.given.volumeDuration * fewestVolumes <= seconds,
         "The setting \"tr\" leaves no room for three volumes in " + textOf(seconds) + " s.");
  demand(timing.given.volumeDuration <= 0 || !timing.markerKind,
         "The setting \"tr\" and onsets contradict each other.");
  if (!timing.given.firstOnset) return;
  demand(timing.given.volumeDuration > 0, "The setting \"first\" needs \"tr\".");
  demand(std::abs(*timing.given.firstOnset) <= seconds,
         "The setting \"first\" lies outside of the recording, which lasts " + textOf(seconds) + " s.");
}

/// It searches for scans and beats in its own way, and knows no other.
void checkPlugin(const CorrectionSettings& settings, const RecordingShape& shape) {
  demand(settings.timing.isBlind() && settings.timing.given.nrOfSlicesPerVolume == 0 &&
             settings.beats.source == BeatSource::Blind,
         "With \"as-plugin\" neither the timing of the scan nor heart beats can be given.");
  demand(shape.nrOfSamples <= std::numeric_limits<int32_t>::max(),
         "With \"as-plugin\" a recording has 2147483647 samples per channel at most.");
}

} // namespace

void checkSettings(const CorrectionSettings& settings, const RecordingShape& shape) {
  demand(settings.rate <= largestIncrease * shape.samplingFrequency,
         "The setting \"rate\" is more than ten times the recording's.");
  checkFilters(settings, nyquistOf(settings, shape));
  checkTiming(settings.timing, static_cast<double>(shape.nrOfSamples) / shape.samplingFrequency);
  if (settings.method.wholeChannels) checkPlugin(settings, shape);
  const bool canSaturate = std::any_of(shape.integers.begin(), shape.integers.end(),
                                       [](const auto& range) { return range.has_value(); });
  demand(!settings.repairSaturation || canSaturate,
         "The setting \"repair-saturation\" needs the integers of a channel (emeg_recording_set_integers).");
}

} // namespace emeg
