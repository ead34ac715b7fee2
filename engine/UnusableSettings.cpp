#include "engine/UnusableSettings.h"

#include "engine/CorrectionFilters.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>

namespace emeg {

namespace {

constexpr double lowestFrequency = 10;   // Hz: what the artifact correction needs at least
constexpr double highestFrequency = 1e6; // Hz: the filter at 1 Hz has its longest

template <typename... Parts>
[[noreturn]] void refuse(const Parts&... parts) {
  std::ostringstream sentence;
  (sentence << ... << parts);
  throw UnusableSettings(sentence.str());
}

void checkShape(const RecordingShape& shape) {
  if (!(shape.samplingFrequency >= lowestFrequency && shape.samplingFrequency <= highestFrequency))
    refuse("The sampling frequency is ", shape.samplingFrequency,
           " Hz; the correction needs one between 10 Hz and 1 MHz.");
  if (shape.nrOfSamples < 1) refuse("The recording holds no samples.");
  if (shape.roles.empty()) refuse("The recording has no channels.");
}

/// Whether the rate holds a frequency above 0 is the filter's affair; only nothing and nonsense are told
/// apart here.
void checkFrequency(const char* what, double frequency) {
  if (!(frequency >= 0 && std::isfinite(frequency)))
    refuse(what, " is ", frequency, " Hz; it must be a frequency above 0 Hz, or 0 for none.");
}

void checkFilters(const CorrectionSettings& settings, double rate) {
  checkFrequency("The high-pass", settings.highPass);
  checkFrequency("The low-pass", settings.lowPass);
  // Transforms of whole channels pair such edges into a stop band.
  if (!settings.method.transformFilters && settings.lowPass > 0 && settings.highPass >= settings.lowPass)
    refuse("A high-pass at ", settings.highPass, " Hz and a low-pass at ", settings.lowPass,
           " Hz leave nothing of the EEG.");
  if (settings.method.transformFilters && !pairedEdges(settings, rate).isComplete)
    refuse("The filters have more edges than can be paired; ask for fewer notches.");
}

void checkRate(const CorrectionSettings& settings) {
  checkFrequency("The new sampling frequency", settings.rate);
  if (settings.decimation < 1) refuse("The decimation factor must be 1 at least.");
  if (settings.method.wholeChannels && settings.rate > 0)
    refuse(
        "A correction of whole channels divides the sampling frequency by a whole number and knows no other "
        "rate.");
  if (!settings.method.wholeChannels && settings.decimation > 1)
    refuse("A correction stretch by stretch takes a new sampling frequency in place of a decimation factor.");
}

bool isElectrocardiogram(const ChannelRole& role) {
  return role.showsHeartBeats && !role.takesPartInPulses && !role.passesUnchanged;
}

} // namespace

void refuseUnusable(const CorrectionSettings& settings, const RecordingShape& shape) {
  checkShape(shape);
  checkFilters(settings, shape.samplingFrequency);
  checkRate(settings);
  if (settings.timing.windowSlices < 1) refuse("The averaging window must be one slice long at least.");
  if (settings.heartBeats && settings.beats.source == BeatSource::Ecg &&
      std::none_of(shape.roles.begin(), shape.roles.end(), isElectrocardiogram))
    refuse("The heart beats are to come from an electrocardiogram, and no channel is one.");
}

} // namespace emeg
