#pragma once

#include "app/RunErrors.h"
#include "engine/CorrectionSettings.h"

#include <optional>
#include <string>
#include <vector>

namespace emeg {

/// A stretch of the recording in seconds from its first sample.
struct Seconds {
  double start = 0;
  std::optional<double> end; ///< nothing: the end of the recording
};

/// Everything that `emeg correct` was asked for. What each member is stands in engine/settings/SettingList
/// and app/correct/RunOptions.
struct CorrectParameters {
  std::string input;

  bool bcg = false;
  std::string pulseMarkers;
  std::string ecg;
  bool sliceWise = false;
  bool volumeWise = false; ///< what happens anyway
  int window = CorrectionSettings().timing.windowSlices;
  std::vector<double> lineNoise;
  bool repairSaturation = false;
  bool asPlugin = false;

  std::string volumeMarkers; ///< empty: not known
  std::string sliceMarkers;
  double tr = 0;  ///< 0: not known
  int slices = 0; ///< 0: not known
  std::optional<double> first;

  std::vector<std::string> channels; ///< empty: all
  std::vector<std::string> treatAsEeg;
  std::optional<Seconds> interval;

  double highPass = 0; ///< 0: none
  double lowPass = 0;
  std::vector<Notch> notches;
  int decimate = CorrectionSettings().decimation;
  std::optional<double> rate;
  bool averageReference = false;
  int scale = CorrectionSettings().scalingOrder;

  std::string output; ///< empty: beside the input, named after it
  bool bids = false;
  bool force = false;
  bool allowUncorrected = false;
  std::string scratch; ///< empty: the output's folder
  int memory = 64;     ///< MB

  bool quiet = false;
  bool verbose = false;
  bool json = false;
};

/// Calls visit(name, member) for every setting of a correction, in the order in which they are listed.
template <typename Parameters, typename Visit>
void visitSettings(Parameters& p, Visit&& visit) {
  visit("bcg", p.bcg);
  visit("pulse-markers", p.pulseMarkers);
  visit("ecg", p.ecg);
  visit("slice-wise", p.sliceWise);
  visit("volume-wise", p.volumeWise);
  visit("window", p.window);
  visit("line-noise", p.lineNoise);
  visit("repair-saturation", p.repairSaturation);
  visit("as-plugin", p.asPlugin);
  visit("volume-markers", p.volumeMarkers);
  visit("slice-markers", p.sliceMarkers);
  visit("tr", p.tr);
  visit("slices", p.slices);
  visit("first", p.first);
  visit("channels", p.channels);
  visit("treat-as-eeg", p.treatAsEeg);
  visit("interval", p.interval);
  visit("high-pass", p.highPass);
  visit("low-pass", p.lowPass);
  visit("notch", p.notches);
  visit("decimate", p.decimate);
  visit("rate", p.rate);
  visit("average-reference", p.averageReference);
  visit("scale", p.scale);
}

/// The same for what a run of the program is asked for beside them.
template <typename Parameters, typename Visit>
void visitRunOptions(Parameters& p, Visit&& visit) {
  visit("output", p.output);
  visit("bids", p.bids);
  visit("force", p.force);
  visit("allow-uncorrected", p.allowUncorrected);
  visit("scratch", p.scratch);
  visit("memory", p.memory);
  visit("quiet", p.quiet);
  visit("verbose", p.verbose);
  visit("json", p.json);
}

} // namespace emeg
