#include "engine/settings/SettingList.h"

#include "engine/CorrectionSettings.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <vector>

namespace emeg {

namespace {

constexpr const char* correction = "Correction";
constexpr const char* timing = "Timing of the scan (found in the EEG if nothing is given)";
constexpr const char* selection = "Selection";
constexpr const char* processing = "Processing after the correction";

constexpr const char* inTheEeg = "found in the EEG";
constexpr const char* none = "none";

using enum SettingKind;

std::string textOf(double number) {
  std::ostringstream text;
  constexpr int digits = 15; // no exponents in whole numbers
  text << std::setprecision(digits) << number;
  return text.str();
}

std::vector<Setting> makeList() {
  const CorrectionSettings defaults;
  const std::string window = textOf(defaults.timing.windowSlices);
  const std::string decimation = textOf(defaults.decimation);
  const std::string scale = textOf(defaults.scalingOrder);
  return {
      // clang-format off
      {"bcg", "RemoveHeartBeatArtifact", Flag, correction, "", "", "",
       "Remove the heart beat (BCG) artifact, too"},
      {"pulse-markers", "PulseMarkers", Text, correction, "NAME", "", inTheEeg,
       "The recording's markers of this name are the heart beats"},
      {"ecg", "EcgChannel", Text, correction, "CHANNEL", "", inTheEeg,
       "The R peaks of this channel are the heart beats"},
      {"slice-wise", "SliceWise", Flag, correction, "", "", "",
       "Average slice by slice"},
      {"volume-wise", "VolumeWise", Flag, correction, "", "", "",
       "Average volume by volume: what happens without --slice-wise"},
      {"window", "WindowHalfLengthSlices", Integer, correction, "N", "slices", window,
       "Half-length of the averaging window", 1, 1000},
      {"line-noise", "LineNoiseFrequencies", Numbers, correction, "HZ,HZ", "Hz", none,
       "Remove a sinusoid of this frequency, whose amplitude and phase may change slowly, from every channel"},
      {"repair-saturation", "RepairSaturation", Flag, correction, "", "", "",
       "Replace samples at the limits of the file's integers by a spline through the others"},
      {"as-plugin", "AsPlugin", Flag, correction, "", "", "",
       "Correct as the workstation's plug-in does, bit for bit: all channels alike, its timing, window in "
       "whole seconds, filters and decimation"},

      {"volume-markers", "VolumeMarkers", Text, timing, "NAME", "", none,
       "The recording's markers of this name, such as R128, stand at the onsets of volumes"},
      {"slice-markers", "SliceMarkers", Text, timing, "NAME", "", none,
       "The same for the onsets of slices"},
      {"tr", "TR", Number, timing, "SECONDS", "seconds", inTheEeg,
       "Time from one volume to the next (the TR)", 0.05, 60},
      {"slices", "Slices", Integer, timing, "N", "", inTheEeg,
       "Slices per volume; excitations, where several slices are excited at once", 1, 10000},
      {"first", "First", Number, timing, "SECONDS", "seconds", inTheEeg,
       "Onset of the first volume, counted from the recording's first sample"},

      {"channels", "Channels", Names, selection, "NAME,NAME", "", "all",
       "The channels to correct and write"},
      {"treat-as-eeg", "TreatAsEEG", Names, selection, "NAME,NAME", "", none,
       "Correct these channels like EEG, whatever they are taken for; all: every one"},
      {"interval", "Interval", Stretch, selection, "START:END", "seconds", "all",
       "The part to correct and write, counted from the first sample; START or END may be left out"},

      {"high-pass", "HighPass", Number, processing, "HZ", "Hz", none,
       "Remove what lies below this frequency"},
      {"low-pass", "LowPass", Number, processing, "HZ", "Hz", none,
       "Remove what lies above this frequency"},
      {"notch", "Notches", StopBands, processing, "HZ[:WIDTH]", "Hz", none,
       "Stop bands, " + textOf(Notch().width) + " wide if not said; --line-noise removes a steady line better"},
      {"decimate", "Decimate", Integer, processing, "N", "", decimation,
       "Divide the sampling frequency by this number, behind a low-pass", 1, 1000},
      {"rate", "Rate", Number, processing, "HZ", "Hz", "as recorded",
       "The new sampling frequency, lower or higher", 1, 1e6},
      {"average-reference", "AverageReference", Flag, processing, "", "", "",
       "Subtract the mean of the EEG channels from each of them"},
      {"scale", "ScalingOrder", Integer, processing, "N", "", scale,
       "Multiply by 10^N; units stay as they are named", 0, 10},
      // clang-format on
  };
}

} // namespace

const char* nameOf(SettingKind kind) {
  switch (kind) {
  case Flag:
    return "flag";
  case Integer:
    return "integer";
  case Number:
    return "number";
  case Text:
    return "text";
  case Names:
    return "names";
  case Numbers:
    return "numbers";
  case Stretch:
    return "stretch";
  case StopBands:
    break;
  }
  return "stop bands";
}

std::string Setting::rangeText() const {
  return hasRange() ? textOf(smallest) + " to " + textOf(largest) : "";
}

std::string Setting::helpLine() const {
  std::string line = help;
  if (*unit != 0) line += std::string(", in ") + unit;
  if (hasRange()) line += ", " + rangeText();
  if (!defaultText.empty()) line += " [" + defaultText + "]";
  return line;
}

std::span<const Setting> correctionSettings() {
  static const std::vector<Setting> list = makeList();
  return list;
}

const Setting* settingNamed(std::span<const Setting> settings, std::string_view name) {
  const auto found = std::find_if(settings.begin(), settings.end(),
                                  [name](const Setting& setting) { return setting.name == name; });
  return found == settings.end() ? nullptr : &*found;
}

} // namespace emeg
