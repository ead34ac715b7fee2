#include "app/commands/SimulateParameters.h"

#include "app/simulation/GradientArtifact.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <optional>
#include <string>

namespace emeg {

namespace {

constexpr double defaultSamplingFrequency = 5000;

/// Options of a group that the preset has no use for, as a sentence; empty when there are none.
std::string pointlessOption(const CLI::App& app, const char* group, const std::string& preset) {
  for (const CLI::Option* option : app.get_options())
    if (option->get_group() == group && option->count() > 0)
      return option->get_name() + " has no meaning with preset " + preset + ".";
  return "";
}

template <typename Value, typename Target>
void replace(const std::optional<Value>& given, Target& value) {
  if (given) value = *given;
}

void replaceScaled(const std::optional<double>& given, double divisor, double& value) {
  if (given) value = *given / divisor;
}

/// The shortest whole number of seconds that holds a scan.
double secondsFor(const GradientParameters& gradient, int64_t volumes) {
  double seconds = std::ceil(gradient.quietBefore + gradient.quietAfter +
                             static_cast<double>(volumes) * gradient.volumeDuration());
  if (std::isfinite(seconds) && nrOfVolumesThatFit(gradient, seconds) < volumes) seconds++;
  return seconds;
}

} // namespace

SimulationParameters parametersOf(const SimulateOptions& o) {
  SimulationParameters p = presetParameters(*presetNamed(o.preset), o.fs.value_or(defaultSamplingFrequency));
  replace(o.seed, p.seed);
  replace(o.channels, p.nrOfChannels);
  replace(o.eegUv, p.eeg.backgroundRmsUv);
  replace(o.alphaUv, p.eeg.alphaPeakUv);
  replace(o.noiseUv, p.eeg.sensorNoiseRmsUv);
  replace(o.lineHz, p.lineNoise.frequencyHz);
  replace(o.lineUv, p.lineNoise.amplitudeUv);
  if (p.gradient) {
    GradientParameters& gradient = *p.gradient;
    replace(o.volumes, gradient.nrOfVolumes);
    replace(o.slices, gradient.nrOfSlicesPerVolume);
    replaceScaled(o.sliceMs, 1000, gradient.sliceDuration);
    replaceScaled(o.gapMs, 1000, gradient.gapDuration);
    replace(o.quietBefore, gradient.quietBefore);
    replace(o.quietAfter, gradient.quietAfter);
    replaceScaled(o.burstMs, 1000, gradient.burstDuration);
    replace(o.peakUv, gradient.peakUv);
    replaceScaled(o.firstSlicePercent, 100, gradient.firstSliceDifference);
    replace(o.lowPassHz, gradient.lowPassHz);
    replace(o.readoutHz, gradient.readoutHz);
    replaceScaled(o.driftPercent, 100, gradient.driftRms);
    if (gradient.nrOfVolumes) p.seconds = secondsFor(gradient, *gradient.nrOfVolumes);
  }
  if (p.heart) {
    replace(o.heartRate, p.heart->beatsPerMinute);
    replaceScaled(o.rmssdMs, 1000, p.heart->rmssd);
    replace(o.pulsePeakUv, p.heart->peakUv);
    replaceScaled(o.ectopicPercent, 100, p.heart->ectopicShare);
    if (o.weak) p.heart->weak = weakStretchFrom(*o.weak);
    if (o.ecg) {
      p.ecg = EcgParameters();
      p.nrOfChannels++;
    }
  }
  if (o.movementUv) {
    p.movement = MovementParameters();
    p.movement->peakUv = *o.movementUv;
    replace(o.movementCount, p.movement->nrOfBursts);
  }
  p.deadChannels = o.deadChannels;
  replace(o.seconds, p.seconds);
  return p;
}

std::string problemWithOptions(const CLI::App& app, const SimulateOptions& o, const SimulationParameters& p) {
  if (!isRecordingPath(o.target.path))
    return "\"" + o.target.path + "\" is no name of a .ctc, .vhdr, .edf or .bdf file.";
  for (const char* option : {"--type", "--organisation", "--uv-per-unit", "--no-ccd"})
    if (!o.target.path.ends_with(".ctc") && app.get_option(option)->count() > 0)
      return std::string(option) + " has a meaning for .ctc files only.";
  if (!p.gradient)
    if (std::string text = pointlessOption(app, scanOptionGroup, o.preset); !text.empty()) return text;
  if (!p.heart)
    if (std::string text = pointlessOption(app, heartOptionGroup, o.preset); !text.empty()) return text;
  const bool integers = o.target.storage.dataType == 3;
  if (!integers && app.get_option("--uv-per-unit")->count() > 0)
    return "--uv-per-unit has a meaning with --type 3 only.";
  if (const double unit = o.target.storage.microvoltsPerUnit; !(unit >= 1e-6 && unit <= 1e6))
    return "--uv-per-unit must lie between 0.000001 and 1000000.";
  return problemWith(p);
}

} // namespace emeg
