#include "app/commands/SimulateOptions.h"

#include <CLI/CLI.hpp>
#include <charconv>

namespace emeg {

namespace {

/// The parser itself takes "-1" and numbers of more than 64 bits for some unsigned number.
std::string problemWithSeed(const std::string& text) {
  uint64_t seed = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, seed);
  return result.ec == std::errc() && result.ptr == end ? ""
                                                       : "\"" + text + "\" is no whole number of 64 bits.";
}

std::string problemWithWeakText(const std::string& text) {
  return weakStretchFrom(text) ? "" : "\"" + text + "\" is not START,SECONDS or START,SECONDS,FACTOR.";
}

void declareRecording(CLI::App& app, SimulateOptions& o) {
  app.add_option("PRESET", o.preset, "What is recorded: see below")
      ->required()
      ->check(CLI::IsMember({"gap", "continuous", "bcg", "both", "fill", "twobursts", "equidistant",
                             "multiband", "manyslices"}));
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

void declareDisturbances(CLI::App& app, SimulateOptions& o) {
  const char* const group = "Disturbances, in all channels at once";
  CLI::Option* spikes =
      app.add_option("--spikes", o.spikes, "Number of spikes of a few milliseconds [0]")->group(group);
  app.add_option("--spike-uv", o.spikeUv, "Peak of a spike [20000]")->group(group)->needs(spikes);
  CLI::Option* dropouts =
      app.add_option("--dropouts", o.dropouts, "Number of stretches in which the recording is 0 [0]")
          ->group(group);
  app.add_option("--dropout-ms", o.dropoutMs, "Length of such a stretch [300]")
      ->group(group)
      ->needs(dropouts);
  app.add_option("--clip-uv", o.clipUv, "Largest absolute value that is recorded [any]")->group(group);
}

void declareScan(CLI::App& app, SimulateOptions& o) {
  app.add_option("--volumes", o.volumes, "Number of volumes of every scan [as many as fit]")
      ->group(scanOptionGroup);
  app.add_option("--slices", o.slices, "Slices per volume")->group(scanOptionGroup);
  app.add_option("--slice-ms", o.sliceMs, "From one slice to the next")->group(scanOptionGroup);
  app.add_option("--gap-ms", o.gapMs, "From the last slice's end to the next volume")->group(scanOptionGroup);
  app.add_option("--quiet-before", o.quietBefore, "Seconds before the scan [3]")->group(scanOptionGroup);
  app.add_option("--quiet-after", o.quietAfter, "Least seconds after the scan [5]")->group(scanOptionGroup);
  app.add_option("--burst-ms", o.burstMs, "Gradient activity per slice [48]")->group(scanOptionGroup);
  app.add_option("--peak-uv", o.peakUv, "Peak of a burst at gain 1 [2500]")->group(scanOptionGroup);
  app.add_option("--first-slice", o.firstSlicePercent, "Difference of each first slice in percent [15]")
      ->group(scanOptionGroup);
  app.add_option("--low-pass", o.lowPassHz, "The amplifier's low-pass in Hz")->group(scanOptionGroup);
  app.add_option("--readout", o.readoutHz, "Frequency of the readout in Hz")->group(scanOptionGroup);
  app.add_option("--drift", o.driftPercent, "RMS of the artifact's slow change in percent")
      ->group(scanOptionGroup);
}

void declareHardKinds(CLI::App& app, SimulateOptions& o) {
  app.add_option("--second-burst-ms", o.secondBurstMs,
                 "From a slice's onset to its second burst; 0: only one [0; twobursts 38.1]")
      ->group(scanOptionGroup);
  app.add_option("--second-burst-factor", o.secondBurstFactor, "Second burst relative to the first [-0.8]")
      ->group(scanOptionGroup);
  app.add_option("--least-quiet-ms", o.leastQuietMs,
                 "Quiet that bursts must leave in a slice; negative: they may overlap [20; less with the "
                 "presets that have less]")
      ->group(scanOptionGroup);
  app.add_option("--jitter-us", o.jitterUs, "RMS by which volumes come early or late, in microseconds [0]")
      ->group(scanOptionGroup);
  app.add_option("--scans", o.scans, "Scans one after the other, all alike [1]")->group(scanOptionGroup);
  app.add_option("--pause", o.pauseSeconds, "Seconds from the end of a scan to the next one [8]")
      ->group(scanOptionGroup);
  app.add_option(
         "--cut-start", o.cutStart,
         "Seconds of the scan that are over when the recording begins, in place of --quiet-before [0]")
      ->group(scanOptionGroup);
  app.add_flag("--ends-in-scan", o.endsInScan,
               "The recording ends before the scan does, in place of --quiet-after")
      ->group(scanOptionGroup);
  app.add_option("--markers", o.markers,
                 "The scanner's own markers, at the first sample at or behind every onset: volume, slice or "
                 "none [none]")
      ->check(CLI::IsMember({"volume", "slice", "none"}))
      ->group(scanOptionGroup);
  app.add_option("--marker-name", o.markerName, "Their name [R128]")->group(scanOptionGroup);
}

void declareHeart(CLI::App& app, SimulateOptions& o) {
  app.add_option("--heart-rate", o.heartRate, "Beats per minute [65]")->group(heartOptionGroup);
  app.add_option("--rmssd-ms", o.rmssdMs, "RMS of successive differences of beat intervals [30]")
      ->group(heartOptionGroup);
  app.add_option("--pulse-peak", o.pulsePeakUv, "Mean peak of the artifact in uV [80]")
      ->group(heartOptionGroup);
  app.add_option("--ectopic", o.ectopicPercent,
                 "Percent of the beats that come early by about 30 % of the interval, followed by a "
                 "compensatory pause; 0 to 30 [0]")
      ->group(heartOptionGroup);
  app.add_flag("--ecg", o.ecg,
               "One more channel with the electrocardiogram (T wave half as high as R), and markers R")
      ->group(heartOptionGroup);
  app.add_option("--weak", o.weak,
                 "START,SECONDS[,FACTOR]: the artifact of beats in that stretch (seconds) is multiplied by "
                 "the factor, 0 to 1 [none; factor 0.2]")
      ->check(problemWithWeakText)
      ->group(heartOptionGroup);
}

} // namespace

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

void declareSimulateOptions(CLI::App& app, SimulateOptions& options) {
  declareRecording(app, options);
  declareFiles(app, options);
  declareDisturbances(app, options);
  declareScan(app, options);
  declareHardKinds(app, options);
  declareHeart(app, options);
}

} // namespace emeg
