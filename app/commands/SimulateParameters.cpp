#include "app/commands/SimulateParameters.h"

#include "app/simulation/GradientArtifact.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <optional>
#include <string>

namespace emeg {

namespace {

constexpr double defaultSamplingFrequency = 5000;
constexpr double shareBehindEnd =
    0.4; // of a volume, at least, that a recording which ends within a scan lacks

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

/// The shortest whole number of seconds that holds all scans, or the longest one that ends within the last.
double secondsFor(const GradientParameters& gradient, int64_t volumes) {
  const double end = leastEndOfScans(gradient, volumes);
  if (gradient.endsInScan) return std::floor(end - shareBehindEnd * gradient.volumeDuration());
  double seconds = std::ceil(end + gradient.quietAfter);
  if (std::isfinite(seconds) && nrOfVolumesThatFit(gradient, seconds) < volumes) seconds++;
  return seconds;
}

void changeTiming(const SimulateOptions& o, GradientParameters& gradient) {
  replace(o.volumes, gradient.nrOfVolumes);
  replace(o.slices, gradient.nrOfSlicesPerVolume);
  replaceScaled(o.sliceMs, 1000, gradient.sliceDuration);
  replaceScaled(o.gapMs, 1000, gradient.gapDuration);
  replace(o.quietBefore, gradient.quietBefore);
  replace(o.quietAfter, gradient.quietAfter);
  replaceScaled(o.jitterUs, 1e6, gradient.onsetJitterRms);
  replace(o.scans, gradient.nrOfScans);
  replace(o.pauseSeconds, gradient.pauseDuration);
  replace(o.cutStart, gradient.cutBefore);
  gradient.endsInScan = o.endsInScan;
}

void changeBursts(const SimulateOptions& o, GradientParameters& gradient) {
  replaceScaled(o.burstMs, 1000, gradient.burstDuration);
  replace(o.peakUv, gradient.peakUv);
  replaceScaled(o.firstSlicePercent, 100, gradient.firstSliceDifference);
  replace(o.lowPassHz, gradient.lowPassHz);
  replaceScaled(o.driftPercent, 100, gradient.driftRms);
  replaceScaled(o.secondBurstMs, 1000, gradient.secondBurstDelay);
  replace(o.secondBurstFactor, gradient.secondBurstFactor);
  replaceScaled(o.leastQuietMs, 1000, gradient.leastQuiet);
}

void changeDisturbances(const SimulateOptions& o, DisturbanceParameters& disturbances) {
  replace(o.spikes, disturbances.nrOfSpikes);
  replace(o.spikeUv, disturbances.spikeUv);
  replace(o.dropouts, disturbances.nrOfDropouts);
  replaceScaled(o.dropoutMs, 1000, disturbances.dropoutDuration);
  replace(o.clipUv, disturbances.clipUv);
}

ScannerTriggerParameters triggersOf(const SimulateOptions& o) {
  using Per = ScannerTriggerParameters::Per;
  ScannerTriggerParameters triggers;
  if (o.markers == "volume") triggers.per = Per::Volume;
  if (o.markers == "slice") triggers.per = Per::Slice;
  replace(o.markerName, triggers.name);
  return triggers;
}

/// A sentence about two options that contradict each other; empty when none do.
std::string contradiction(const CLI::App& app, const SimulateOptions& o) {
  const auto isGiven = [&](const char* name) { return app.get_option(name)->count() > 0; };
  if (isGiven("--cut-start") && isGiven("--quiet-before"))
    return "--quiet-before has no meaning with --cut-start: the recording begins within the scan.";
  if (o.endsInScan && isGiven("--quiet-after"))
    return "--quiet-after has no meaning with --ends-in-scan: the recording ends within the scan.";
  if (isGiven("--pause") && o.scans.value_or(1) < 2)
    return "--pause has a meaning with several --scans only.";
  if (o.markers == "none" && isGiven("--marker-name"))
    return "--marker-name has a meaning with --markers volume or slice only.";
  if (o.markers != "none" && o.noPrt)
    return "--markers has no meaning with --no-prt, which writes no markers.";
  return "";
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
    changeTiming(o, gradient);
    replace(o.readoutHz, gradient.readoutHz);
    fitBurstsToSlices(p);
    changeBursts(o, gradient);
    p.triggers = triggersOf(o);
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
  changeDisturbances(o, p.disturbances);
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
  if (std::string text = contradiction(app, o); !text.empty()) return text;
  return problemWith(p);
}

} // namespace emeg
