#include "engine/settings/SettingChecks.h"

#include "engine/CorrectionFilters.h"
#include "engine/settings/OutputRate.h"
#include "engine/settings/SettingText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace emeg {

namespace {

using Problem = std::optional<std::string>;

constexpr double lowestFrequency = 10;   // Hz: what the artifact correction needs at least
constexpr double highestFrequency = 1e6; // Hz: the filter at 1 Hz has its longest
constexpr double fewestVolumes = 3;

/// One look at the settings of one recording.
class SettingCheck {
public:
  SettingCheck(const CorrectionSettings& settings, const RecordingShape& shape, const std::string& prefix)
      : settings_(settings), shape_(shape), prefix_(prefix),
        seconds_(static_cast<double>(shape.nrOfSamples) / shape.samplingFrequency) {}

  Problem firstProblem() const {
    for (const auto check :
         {&SettingCheck::recording, &SettingCheck::counts, &SettingCheck::rate, &SettingCheck::passBand,
          &SettingCheck::notches, &SettingCheck::lineNoise, &SettingCheck::saturation, &SettingCheck::timing,
          &SettingCheck::electrocardiogram, &SettingCheck::plugin})
      if (Problem problem = (this->*check)()) return problem;
    return std::nullopt;
  }

private:
  /// "--tr 2".
  std::string named(const char* name, double value) const {
    return prefix_ + name + " " + shortTextOf(value);
  }

  Problem recording() const {
    const double rate = shape_.samplingFrequency;
    if (!(rate >= lowestFrequency && rate <= highestFrequency))
      return "The recording has " + shortTextOf(rate) + " samples a second; the correction needs " +
             shortTextOf(lowestFrequency) + " at least and takes 1000000 at most.";
    if (shape_.nrOfSamples < 1) return "The recording holds no samples.";
    if (shape_.roles.empty()) return "The recording has no channels.";
    return std::nullopt;
  }

  Problem counts() const {
    if (settings_.decimation < 1)
      return named("decimate", settings_.decimation) + ": the sampling frequency is divided by 1 at least.";
    if (settings_.timing.windowSlices < 1)
      return named("window", settings_.timing.windowSlices) +
             ": the averaging window is one slice long at least.";
    return std::nullopt;
  }

  /// Whole channels are decimated, stretches get a new rate.
  Problem rate() const {
    if (!settings_.method.wholeChannels && settings_.decimation > 1)
      return named("decimate", settings_.decimation) + ": stretch by stretch, a new " + prefix_ +
             "rate takes its place.";
    if (settings_.rate == 0) return std::nullopt;
    if (settings_.method.wholeChannels)
      return named("rate", settings_.rate) + ": with " + prefix_ + "as-plugin, " + prefix_ +
             "decimate takes its place.";
    return problemOfRate(shape_.samplingFrequency, settings_.rate, settings_.method, prefix_);
  }

  /// An edge lies below half the sampling frequency at which it is applied.
  Problem edge(const char* name, double hz, double samplingFrequency) const {
    if (hz >= 0 && hz < samplingFrequency / 2) return std::nullopt;
    const char* const whose = samplingFrequency < shape_.samplingFrequency ? "the new" : "the recording's";
    return named(name, hz) + ": the frequency lies between 0 and " + shortTextOf(samplingFrequency / 2) +
           " Hz, half of " + whose + " sampling frequency.";
  }

  /// The plug-in's filters are those of the recorded rate.
  double filteredRate() const {
    const bool isLower = !settings_.method.wholeChannels && settings_.rate > 0;
    return isLower ? std::min(settings_.rate, shape_.samplingFrequency) : shape_.samplingFrequency;
  }

  Problem passBand() const {
    if (Problem problem = edge("high-pass", settings_.highPass, filteredRate())) return problem;
    if (Problem problem = edge("low-pass", settings_.lowPass, filteredRate())) return problem;
    if (settings_.highPass > 0 && settings_.lowPass > 0 && settings_.highPass >= settings_.lowPass)
      return named("high-pass", settings_.highPass) + " " + named("low-pass", settings_.lowPass) +
             " leaves no frequency.";
    return std::nullopt;
  }

  Problem notches() const {
    for (const Notch& notch : settings_.notches) {
      const double low = notch.frequency - notch.width / 2;
      if (Problem problem = edge("notch", low, filteredRate())) return problem;
      if (Problem problem = edge("notch", notch.frequency + notch.width / 2, filteredRate())) return problem;
      if (!(low > 0) || !(notch.width > 0))
        return named("notch", notch.frequency) + ":" + shortTextOf(notch.width) +
               ": the stop band must begin above 0 Hz and be wider than 0.";
    }
    return std::nullopt;
  }

  /// Is removed before the rate changes.
  Problem lineNoise() const {
    for (const double hz : settings_.lineNoise) {
      if (Problem problem = edge("line-noise", hz, shape_.samplingFrequency)) return problem;
      if (!(hz > 0)) return named("line-noise", hz) + ": give the frequency in Hz, such as 50 or 60.";
    }
    return std::nullopt;
  }

  Problem electrocardiogram() const {
    if (!settings_.heartBeats || settings_.beats.source != BeatSource::Ecg) return std::nullopt;
    const bool isThere = std::any_of(shape_.roles.begin(), shape_.roles.end(), [](const ChannelRole& role) {
      return role.showsHeartBeats && !role.takesPartInPulses && !role.passesUnchanged;
    });
    if (isThere) return std::nullopt;
    return prefix_ + "ecg: the heart beats are to come from an electrocardiogram, and no channel is one.";
  }

  /// Samples at the limits of integers cannot be told from others without integers.
  Problem saturation() const {
    if (!settings_.repairSaturation) return std::nullopt;
    const size_t known = std::min(shape_.roles.size(), shape_.integers.size());
    for (size_t c = 0; c < known; ++c)
      if (shape_.integers[c] && !shape_.roles[c].passesUnchanged) return std::nullopt;
    return prefix_ + "repair-saturation: the recording stores no integers, so saturated samples cannot be "
                     "told from others; give the file that the amplifier wrote, or the integers' limits.";
  }

  Problem timing() const {
    const GivenTiming& given = settings_.timing.given;
    if (!(given.volumeDuration * fewestVolumes <= seconds_))
      return named("tr", given.volumeDuration) + ": what is corrected lasts " + shortTextOf(seconds_) +
             " s, and three volumes are needed at least; the TR is given in seconds.";
    if (given.volumeDuration > 0 && settings_.timing.markerKind)
      return named("tr", given.volumeDuration) +
             ": markers of volumes or slices tell the TR; give one of both.";
    if (!given.firstOnset) return std::nullopt;
    if (!(given.volumeDuration > 0)) return prefix_ + "first needs " + prefix_ + "tr.";
    if (!(std::abs(*given.firstOnset) <= seconds_))
      return prefix_ + "first: the onset is " + shortTextOf(*given.firstOnset) +
             " s away from the first corrected sample, and what is corrected lasts " + shortTextOf(seconds_) +
             " s; give the onset of a volume there, in seconds.";
    return std::nullopt;
  }

  /// It searches for scans and beats in its own way, and knows no other.
  Problem plugin() const {
    if (!settings_.method.wholeChannels) return std::nullopt;
    const bool isBlind = settings_.timing.isBlind() && settings_.timing.given.nrOfSlicesPerVolume == 0 &&
                         settings_.beats.source == BeatSource::Blind;
    if (!isBlind)
      return prefix_ + "as-plugin: neither the timing of the scan nor heart beats can be given with it.";
    if (!pairedEdges(settings_, shape_.samplingFrequency).isComplete)
      return prefix_ + "as-plugin: the filters have more edges than can be paired; ask for fewer notches.";
    if (shape_.nrOfSamples > std::numeric_limits<int32_t>::max())
      return prefix_ + "as-plugin: a recording has 2147483647 samples per channel at most.";
    return std::nullopt;
  }

  const CorrectionSettings& settings_;
  const RecordingShape& shape_;
  const std::string& prefix_;
  double seconds_; ///< of the recording
};

} // namespace

Problem firstProblemOf(const CorrectionSettings& settings, const RecordingShape& shape,
                       const std::string& prefix) {
  return SettingCheck(settings, shape, prefix).firstProblem();
}

void checkSettings(const CorrectionSettings& settings, const RecordingShape& shape) {
  if (const Problem problem = firstProblemOf(settings, shape)) throw UnusableSettings(*problem);
}

} // namespace emeg
