#pragma once

#include <cmath>
#include <cstdint>

namespace emeg {

/// What the model of the heart beats does at the edges of the beats that were found. The defaults are the
/// plug-in's.
struct BeatModelSettings {
  /// Outside the beats the estimate is 0: the EEG stays. Otherwise it is the series itself there.
  bool keepOutside = false;
  /// Samples over which the estimate fades to 0 at its outer ends. Only with keepOutside.
  int32_t fadeLength = 0;
  /// An interval that is longer than this many times those around it is a gap: the model ends behind the beat
  /// in front of it and begins again before the beat behind it. 0: none is. Only with keepOutside.
  double gapFactor = 0;
  /// The model has two values per sample of a usual long beat, whatever single intervals are like. Otherwise
  /// the extreme intervals decide.
  bool followsUsualBeat = false;
};

/// The settings of a correction that leaves the EEG alone where it has no beats. `rate` (Hz) is the series'.
inline BeatModelSettings keepingBeatModel(float rate) {
  constexpr double fadeSeconds = 0.075;
  BeatModelSettings settings;
  settings.keepOutside = true;
  settings.fadeLength = static_cast<int32_t>(std::lround(fadeSeconds * static_cast<double>(rate)));
  settings.gapFactor = 1.5;
  settings.followsUsualBeat = true;
  return settings;
}

} // namespace emeg
