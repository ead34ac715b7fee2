#pragma once

#include "artifacts/gradient/timing/choice/TimingChoice.h"
#include "engine/Method.h"

#include <string>
#include <vector>

namespace emeg {

/// A stop band of the output filter.
struct Notch {
  double frequency = 0; ///< Hz, its middle
  double width = 4;     ///< Hz, between the two edges
};

/// Where the heart beats come from: found in the EEG, a list of times, or an electrocardiogram.
enum class BeatSource { Blind, Markers, Ecg };

/// The heart beats that a correction is to use.
struct BeatRequest {
  BeatSource source = BeatSource::Blind;
  std::string name;          ///< of the markers or of the channel, for messages
  std::vector<double> times; ///< of the markers, seconds from the first sample
};

/// Everything that one correction is asked for. Times in seconds from the first sample that is corrected,
/// frequencies in Hz, 0 or empty where nothing is wanted. engine/settings/SettingList.h has the name,
/// default, range, unit and help of each.
struct CorrectionSettings {
  bool gradient = true;
  bool heartBeats = false;
  TimingRequest timing; ///< also how the gradient artifact is averaged, and over how many slices
  BeatRequest beats;
  std::vector<double> lineNoise;
  bool repairSaturation = false;

  double highPass = 0;
  double lowPass = 0;
  std::vector<Notch> notches;
  double rate = 0;    ///< the new sampling frequency; 0: as recorded
  int decimation = 1; ///< of whole-channel methods, in place of `rate`
  bool averageReference = false;
  int scalingOrder = 0; ///< output is multiplied by 10^scalingOrder

  Method method = stretchByStretch;
};

} // namespace emeg
