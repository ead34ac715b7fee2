#include "app/commands/Simulate.h"

#include "app/simulation/GradientArtifact.h"
#include "app/simulation/SimulatedRecording.h"
#include "app/simulation/SimulationParameters.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace emeg {

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;
constexpr double defaultSamplingFrequency = 5000;

const char* const description =
    "Simulate an EEG recording with MR gradient or heart beat artifacts whose truth is known";

const char* const footer = R"(Presets:
  gap         20 slices of 75.0142 ms per volume, a pause after each volume (TR 1.8003371 s)
  continuous  25 slices of 72.0227 ms per volume and 4.3 ms of dead time, no pause
  bcg         heart beats in the magnet, no scanning
  both        the scan of gap, and heart beats

Below 4000 Hz the amplifier passes 560 Hz, the readout lies at 500 Hz and the artifact drifts by
1 % RMS; from 4000 Hz on it passes 250 Hz, the readout lies at 220 Hz and nothing drifts.

The extension of OUT chooses the format: .ctc, .vhdr (BrainVision, with .eeg and .vmrk), .edf
(EDF+, simulated twice: the first time to find the range) or .bdf (BDF+, steps of 1/32 uV).

Written beside OUT (all voltages in microvolts, all times in seconds from the first sample):
  OUT.ccd         channel names (.ctc only)
  OUT.prt         a protocol with the conditions Rest and Task (.ctc only; else they are markers)
  OUT_truth.json  every parameter, the exact times of scan and heart, RMS of the parts
  OUT_clean.ctc   the same without artifacts (EEG, sensor noise, line noise, movements)
  OUT_pulse.ctc   the heart beat artifact alone (presets bcg and both)

The same seed and options give the same bytes. Memory stays below about 100 MB whatever the
length. Exit status: 0 done, 1 a file could not be written, 2 wrong arguments.

Examples:
  emeg simulate gap run1.ctc
      two minutes of 32 channels at 5 kHz
  emeg simulate continuous run2.ctc --fs 2000 --seconds 30 --channels 4 --seed 7
  emeg simulate both run3.ctc --type 3 --uv-per-unit 0.5 --organisation 1 --heart-rate 72
  emeg simulate bcg run5.ctc --fs 500 --ectopic 5 --weak 60,20,0.2 --movement 300
      some beats come early, 20 s of small artifacts from 60 s on, five movements of the head
  emeg simulate both demo.vhdr
      a BrainVision recording
  emeg simulate gap run4.ctc --volumes 40 --slices 32 --slice-ms 60.1 --burst-ms 38 --gap-ms 80
)";

/// What the command line says; what it does not say comes from the preset.
struct SimulateOptions {
  std::string preset;
  RecordingTarget target;
  bool noCcd = false;
  bool noPrt = false;
  bool noTruth = false;

  std::optional<uint64_t> seed;
  std::optional<int> channels;
  std::optional<double> seconds, fs;
  std::optional<double> eegUv, alphaUv, noiseUv;
  std::optional<double> lineHz, lineUv;

  std::optional<int64_t> volumes;
  std::optional<int> slices;
  std::optional<double> sliceMs, gapMs, quietBefore, quietAfter, burstMs, peakUv, firstSlicePercent;
  std::optional<double> lowPassHz, readoutHz, driftPercent;

  std::optional<double> heartRate, rmssdMs, pulsePeakUv, ectopicPercent;
  std::optional<std::string> weak;

  std::optional<double> movementUv;
  std::optional<int64_t> movementCount;
  std::vector<int> deadChannels;
};

const char* const scanGroup = "Scan (presets gap, continuous, both)";
const char* const heartGroup = "Heart (presets bcg, both)";

/// The parser itself takes "-1" and numbers of more than 64 bits for some unsigned number.
std::string problemWithSeed(const std::string& text) {
  uint64_t seed = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, seed);
  return result.ec == std::errc() && result.ptr == end ? ""
                                                       : "\"" + text + "\" is no whole number of 64 bits.";
}

/// "START,SECONDS" or "START,SECONDS,FACTOR".
std::optional<WeakStretch> weakStretchFrom(const std::string& text) {
  std::vector<double> numbers;
  const char* at = text.data();
  const char* const end = text.data() + text.size();
  while (true) {
    double number = 0;
    const auto result = std::from_chars(at, end, number);
    if (result.ec != std::errc()) return std::nullopt;
    numbers.push_back(number);
    if (result.ptr == end) break;
    if (*result.ptr != ',') return std::nullopt;
    at = result.ptr + 1;
  }
  if (numbers.size() < 2 || numbers.size() > 3) return std::nullopt;
  WeakStretch weak;
  weak.start = numbers[0];
  weak.duration = numbers[1];
  if (numbers.size() == 3) weak.factor = numbers[2];
  return weak;
}

std::string problemWithWeakText(const std::string& text) {
  return weakStretchFrom(text) ? "" : "\"" + text + "\" is not START,SECONDS or START,SECONDS,FACTOR.";
}

void declareRecording(CLI::App& app, SimulateOptions& o) {
  app.add_option("PRESET", o.preset, "gap, continuous, bcg or both")
      ->required()
      ->check(CLI::IsMember({"gap", "continuous", "bcg", "both"}));
  app.add_option("OUT", o.target.path, "The recording to write: .ctc, .vhdr, .edf or .bdf")->required();

  const char* const group = "Recording";
  app.add_option("--seed", o.seed, "Seed of all random numbers [1]")->check(problemWithSeed)->group(group);
  app.add_option("--channels", o.channels, "Number of channels, 1 to 256 [32]")->group(group);
  app.add_option("--seconds", o.seconds, "Length [120, or what --volumes needs]")->group(group);
  app.add_option("--fs", o.fs, "Sampling frequency in Hz [5000]")->group(group);
  app.add_option("--eeg-uv", o.eegUv, "RMS of the 1/f background [15]")->group(group);
  app.add_option("--alpha-uv", o.alphaUv, "Largest amplitude of the alpha rhythm [30]")->group(group);
  app.add_option("--noise-uv", o.noiseUv, "RMS of the sensor noise [0.7]")->group(group);
  CLI::Option* line =
      app.add_option("--line-noise", o.lineHz, "Frequency of line noise in Hz [none]")->group(group);
  app.add_option("--line-amplitude", o.lineUv, "Amplitude of line noise in uV [5]")
      ->group(group)
      ->needs(line);
  CLI::Option* movement = app.add_option("--movement", o.movementUv,
                                         "Bursts of head movement, 1 to 3 s of about 0.5 to 8 Hz, part of "
                                         "the clean EEG: peak in uV in the channel that sees most [none]")
                              ->group(group);
  app.add_option("--movement-count", o.movementCount, "Number of such bursts, spread over the recording [5]")
      ->group(group)
      ->needs(movement);
  app.add_option("--dead-channel", o.deadChannels,
                 "Index (from 0) of a channel that is 0 throughout; may be repeated [none]")
      ->allow_extra_args(false)
      ->group(group);
}

void declareFiles(CLI::App& app, SimulateOptions& o) {
  const char* const group = "Files";
  app.add_option("--type", o.target.storage.dataType, "Samples: 1 float, 2 double, 3 16-bit integer [1]")
      ->check(CLI::IsMember({1, 2, 3}))
      ->group(group);
  app.add_option("--uv-per-unit", o.target.storage.microvoltsPerUnit,
                 "Microvolts per unit of 16-bit samples; larger values are clipped [1]")
      ->group(group);
  app.add_option("--organisation", o.target.storage.dataOrganisation,
                 "1 channel after channel, 2 time point after time point [2]")
      ->check(CLI::IsMember({1, 2}))
      ->group(group);
  app.add_flag("--no-ccd", o.noCcd, "Write no channel description")->group(group);
  app.add_flag("--no-prt", o.noPrt, "Write no protocol, no markers")->group(group);
  app.add_flag("--no-truth", o.noTruth, "Write no truth, clean or pulse file")->group(group);
  app.add_flag("--force", o.target.overwrite, "Replace existing files")->group(group);
}

void declareArtifacts(CLI::App& app, SimulateOptions& o) {
  app.add_option("--volumes", o.volumes, "Number of volumes [as many as fit]")->group(scanGroup);
  app.add_option("--slices", o.slices, "Slices per volume")->group(scanGroup);
  app.add_option("--slice-ms", o.sliceMs, "From one slice to the next")->group(scanGroup);
  app.add_option("--gap-ms", o.gapMs, "From the last slice's end to the next volume")->group(scanGroup);
  app.add_option("--quiet-before", o.quietBefore, "Seconds before the scan [3]")->group(scanGroup);
  app.add_option("--quiet-after", o.quietAfter, "Least seconds after the scan [5]")->group(scanGroup);
  app.add_option("--burst-ms", o.burstMs, "Gradient activity per slice [48]")->group(scanGroup);
  app.add_option("--peak-uv", o.peakUv, "Peak of a burst at gain 1 [2500]")->group(scanGroup);
  app.add_option("--first-slice", o.firstSlicePercent, "Difference of each first slice in percent [15]")
      ->group(scanGroup);
  app.add_option("--low-pass", o.lowPassHz, "The amplifier's low-pass in Hz")->group(scanGroup);
  app.add_option("--readout", o.readoutHz, "Frequency of the readout in Hz")->group(scanGroup);
  app.add_option("--drift", o.driftPercent, "RMS of the artifact's slow change in percent")->group(scanGroup);

  app.add_option("--heart-rate", o.heartRate, "Beats per minute [65]")->group(heartGroup);
  app.add_option("--rmssd-ms", o.rmssdMs, "RMS of successive differences of beat intervals [30]")
      ->group(heartGroup);
  app.add_option("--pulse-peak", o.pulsePeakUv, "Mean peak of the artifact in uV [80]")->group(heartGroup);
  app.add_option("--ectopic", o.ectopicPercent,
                 "Percent of the beats that come early by about 30 % of the interval, followed by a "
                 "compensatory pause; 0 to 30 [0]")
      ->group(heartGroup);
  app.add_option("--weak", o.weak,
                 "START,SECONDS[,FACTOR]: the artifact of beats in that stretch (seconds) is multiplied by "
                 "the factor, 0 to 1 [none; factor 0.2]")
      ->check(problemWithWeakText)
      ->group(heartGroup);
}

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
    if (std::string text = pointlessOption(app, scanGroup, o.preset); !text.empty()) return text;
  if (!p.heart)
    if (std::string text = pointlessOption(app, heartGroup, o.preset); !text.empty()) return text;
  const bool integers = o.target.storage.dataType == 3;
  if (!integers && app.get_option("--uv-per-unit")->count() > 0)
    return "--uv-per-unit has a meaning with --type 3 only.";
  if (const double unit = o.target.storage.microvoltsPerUnit; !(unit >= 1e-6 && unit <= 1e6))
    return "--uv-per-unit must lie between 0.000001 and 1000000.";
  return problemWith(p);
}

/// Says how far a long simulation is; silent for those that are done within some seconds.
class Progress {
public:
  explicit Progress(std::ostream& err) : err_(err) {}

  void report(double finished) {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < std::chrono::seconds(5) || finished >= 1) return;
    last_ = now;
    err_ << "emeg simulate: " << static_cast<int>(100 * finished) << " %" << std::endl;
  }

private:
  std::ostream& err_;
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

std::string summaryOf(const SimulationParameters& p, const std::string& path) {
  std::ostringstream text;
  text << path << ": " << p.nrOfChannels << (p.nrOfChannels == 1 ? " channel, " : " channels, ") << p.seconds
       << " s at " << p.samplingFrequency << " Hz";
  if (p.gradient) {
    const int64_t volumes = p.gradient->nrOfVolumes.value_or(nrOfVolumesThatFit(*p.gradient, p.seconds));
    text << ", " << volumes << " volumes of " << p.gradient->nrOfSlicesPerVolume << " slices";
  }
  if (p.heart) text << ", heart at " << p.heart->beatsPerMinute << " beats per minute";
  return text.str();
}

int runSimulate(const CLI::App& app, const SimulateOptions& options, std::ostream& out, std::ostream& err) {
  const SimulationParameters parameters = parametersOf(options);
  const std::string wrong = problemWithOptions(app, options, parameters);
  if (!wrong.empty()) {
    err << "emeg simulate: " << wrong << "\n";
    return wrongUsage;
  }
  RecordingTarget target = options.target;
  target.withCcd = !options.noCcd;
  target.withPrt = !options.noPrt;
  target.withTruth = !options.noTruth;
  Progress progress(err);
  const std::string problem =
      writeRecording(parameters, target, [&progress](double finished) { progress.report(finished); });
  if (!problem.empty()) {
    err << "emeg simulate: " << problem << "\n";
    return failed;
  }
  out << summaryOf(parameters, target.path) << "\n";
  return 0;
}

} // namespace

Command addSimulateCommand(CLI::App& program) {
  auto options = std::make_shared<SimulateOptions>();
  CLI::App* app = program.add_subcommand("simulate", description);
  app->footer(footer);
  declareRecording(*app, *options);
  declareFiles(*app, *options);
  declareArtifacts(*app, *options);
  return {app, [app, options](std::ostream& out, std::ostream& err) {
            return runSimulate(*app, *options, out, err);
          }};
}

} // namespace emeg
