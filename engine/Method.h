#pragma once

#include <cstddef>
#include <limits>

namespace emeg {

/// What differs between the ways in which the same stages are run. Every difference has a name here and
/// nowhere else.
struct Method {
  /// Channel after channel, each as a whole and in place in its store; otherwise stretch after stretch, all
  /// channels of a stretch together.
  bool wholeChannels = false;
  /// Low frequencies are split off, and the output is filtered, by transforms of whole channels with gains in
  /// single precision whose edges are paired into bands; the rate is divided by keeping every n-th sample.
  /// Otherwise by linear-phase filters that act one after the other, as if each were alone.
  bool transformFilters = false;
  /// The averaging window is rounded up to whole seconds; otherwise it lasts as many slices as were asked
  /// for.
  bool windowInWholeSeconds = false;
  /// In front of the first beat and behind the last everything below 35 Hz counts as heart beat artifact;
  /// otherwise nothing does, and the model is carried to the recording's edges where the signal confirms it.
  bool removesOutsideBeats = false;
  /// Beats that are kept, and minima of the detection signal per second that are looked at.
  size_t mostBeats = std::numeric_limits<size_t>::max();
  float mostCandidatesPerSecond = std::numeric_limits<float>::infinity();
};

/// As the workstation's plug-in does.
inline constexpr Method asThePluginDoes{true, true, true, true, 3000, 35};

/// As the program and the library do.
inline constexpr Method stretchByStretch{};

} // namespace emeg
