#include "app/commands/Correct.h"

#include "app/correct/Correction.h"
#include "app/correct/Interrupt.h"
#include "app/correct/Summary.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>

namespace emeg {

namespace {

constexpr int correctedWell = 0;
constexpr int failed = 1;
constexpr int unusable = 2;
constexpr int correctedWithWarnings = 3;
constexpr int signalled = 128;

constexpr int smallestWindow = 1;
constexpr int largestWindow = 1000;
constexpr int largestDecimation = 1000;
constexpr int largestScale = 10;
constexpr double defaultNotchWidth = 4; // Hz
constexpr double shortestTr = 0.05;     // seconds
constexpr double longestTr = 60;        // seconds
constexpr int largestSlices = 10000;

const char* const description = "Remove MR gradient and heart beat artifacts from an EEG recording";

const char* const footer =
    R"(IN is a BrainVision header (.vhdr), an EDF or BDF file, an EEGLAB .set or a CTC file; no trigger
channel, ECG or scanner log is needed. The output has the input's format (.vhdr for a .set) and its
name with what was done: NAME_GRA.vhdr, NAME_GRA_BCG.vhdr, ... Markers come along at their times, and
the onsets that were found are added: MRGradientTriggers, HeartPulseTriggers.

Channels: EEG channels are corrected. From ECG, EOG, EMG and other channels only the gradient artifact
is removed; trigger and status channels pass unchanged. `emeg info` shows what channels are taken for.

Exit status: 0 good; 1 the run failed or no scanner sequence was found, nothing is written; 2 wrong
arguments or input; 3 written, but with warnings: read them; 128 + signal when interrupted.

Examples:
  emeg correct sub-01_task-rest_eeg.vhdr --bcg
      writes sub-01_task-rest_eeg_GRA_BCG.vhdr beside it
  emeg correct run1.edf -o clean/run1.bdf --slice-wise --window 150 --line-noise 50 --rate 250
  emeg correct sub-01/eeg/sub-01_task-rest_eeg.vhdr --bcg --bids
  emeg correct run1.vhdr --bcg --ecg ECG
      heart beats from the ECG channel: for recordings with movements, or an irregular heart
  emeg correct run2.vhdr --bcg --interval 12:312 --channels Fp1,Fp2,Cz,ECG
  emeg correct run3.vhdr --volume-markers R128 --slices 36
  emeg correct run3.edf --tr 2 --slices 36
)";

/// The whole text as a number.
std::optional<double> numberIn(const std::string& text) {
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

/// "START:END", "START:" or ":END".
std::optional<Seconds> intervalIn(const std::string& text) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos || text == ":") return std::nullopt;
  Seconds interval;
  const std::string start = text.substr(0, colon);
  const std::string end = text.substr(colon + 1);
  if (!start.empty()) {
    const std::optional<double> number = numberIn(start);
    if (!number) return std::nullopt;
    interval.start = *number;
  }
  if (!end.empty()) {
    interval.end = numberIn(end);
    if (!interval.end) return std::nullopt;
  }
  return interval;
}

/// "HZ" or "HZ:WIDTH".
std::optional<Notch> notchIn(const std::string& text) {
  const size_t colon = text.find(':');
  const std::optional<double> frequency = numberIn(text.substr(0, colon));
  const std::optional<double> width =
      colon == std::string::npos ? defaultNotchWidth : numberIn(text.substr(colon + 1));
  if (!frequency || !width) return std::nullopt;
  return Notch{*frequency, *width};
}

/// An empty name would select what the option's absence does.
std::string problemWithName(const std::string& text) {
  return text.empty() ? "the name is empty; leave the option out for what happens without it" : "";
}

/// Behind a check of the range, which lets pass what compares with nothing.
std::string problemWithNumber(const std::string& text) {
  const std::optional<double> number = numberIn(text);
  return number && std::isfinite(*number) ? "" : "\"" + text + "\" is not a number of seconds, such as 2.5";
}

std::string problemWithInterval(const std::string& text) {
  return intervalIn(text) ? "" : "\"" + text + "\" is not START:END in seconds, such as 12:312 or 12:";
}

std::string problemWithNotch(const std::string& text) {
  return notchIn(text) ? "" : "\"" + text + "\" is not HZ or HZ:WIDTH, such as 50 or 50:4";
}

/// Options that need more than the parser can store.
struct CorrectOptions {
  CorrectParameters parameters;
  bool sliceWise = false;
  bool volumeWise = false; ///< what happens anyway
  std::string interval;
  std::vector<std::string> notches;
};

void declareCorrection(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Correction";
  CorrectParameters& p = o.parameters;
  CLI::Option* bcg = app.add_flag("--bcg", p.bcg, "Remove the heart beat (BCG) artifact, too")->group(group);
  CLI::Option* pulses = app.add_option("--pulse-markers", p.pulseMarkers,
                                       "The recording's markers of this name are the heart beats [found in "
                                       "the EEG]")
                            ->type_name("NAME")
                            ->check(problemWithName)
                            ->group(group)
                            ->needs(bcg);
  app.add_option("--ecg", p.ecg, "The R peaks of this channel are the heart beats [found in the EEG]")
      ->type_name("CHANNEL")
      ->check(problemWithName)
      ->group(group)
      ->needs(bcg)
      ->excludes(pulses);
  CLI::Option* slices = app.add_flag("--slice-wise", o.sliceWise, "Average slice by slice")->group(group);
  app.add_flag("--volume-wise", o.volumeWise, "Average volume by volume [this one]")
      ->group(group)
      ->excludes(slices);
  app.add_option("--window", p.window, "Half-length of the averaging window in slices, 1 to 1000 [150]")
      ->type_name("N")
      ->check(CLI::Range(smallestWindow, largestWindow))
      ->group(group);
  app.add_option("--line-noise", p.lineNoise,
                 "Remove a sinusoid of constant frequency, amplitude and phase from every channel [none]")
      ->type_name("HZ,HZ")
      ->allow_extra_args(false)
      ->delimiter(',')
      ->group(group);
  app.add_flag("--repair-saturation", p.repairSaturation,
               "Replace samples at the limits of the file's integers by a spline through the others")
      ->group(group);
}

void declareTiming(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Timing of the scan (found in the EEG if nothing is given)";
  CorrectParameters& p = o.parameters;
  CLI::Option* volumes =
      app.add_option("--volume-markers", p.volumeMarkers,
                     "Name of the recording's markers at the onsets of volumes, such as R128")
          ->type_name("NAME")
          ->check(problemWithName)
          ->group(group);
  CLI::Option* slices =
      app.add_option("--slice-markers", p.sliceMarkers, "The same for those at the onsets of slices")
          ->type_name("NAME")
          ->check(problemWithName)
          ->excludes(volumes)
          ->group(group);
  CLI::Option* tr = app.add_option("--tr", p.tr, "Time from one volume to the next in seconds (the TR)")
                        ->type_name("SECONDS")
                        ->check(CLI::Range(shortestTr, longestTr))
                        ->check(problemWithNumber)
                        ->excludes(volumes)
                        ->excludes(slices)
                        ->group(group);
  app.add_option("--slices", p.slices,
                 "Slices per volume; excitations, where several slices are excited at once")
      ->type_name("N")
      ->check(CLI::Range(1, largestSlices))
      ->group(group);
  app.add_option("--first", p.first, "Onset of the first volume in seconds from the recording's first sample")
      ->type_name("SECONDS")
      ->check(problemWithNumber)
      ->needs(tr)
      ->group(group);
}

void declareSelection(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Selection";
  CorrectParameters& p = o.parameters;
  app.add_option("--channels", p.channels, "The channels to correct and write [all]")
      ->type_name("NAME,NAME")
      ->allow_extra_args(false)
      ->delimiter(',')
      ->group(group);
  app.add_option("--treat-as-eeg", p.treatAsEeg,
                 "Correct these channels like EEG, whatever they are taken for; all: every one [none]")
      ->type_name("NAME,NAME")
      ->allow_extra_args(false)
      ->delimiter(',')
      ->group(group);
  app.add_option("--interval", o.interval, "In seconds from the first sample; END may be left out [all]")
      ->type_name("START:END")
      ->check(problemWithInterval)
      ->group(group);
}

void declareProcessing(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Processing after the correction";
  CorrectParameters& p = o.parameters;
  app.add_option("--high-pass", p.highPass, "Remove what lies below this frequency in Hz [none]")
      ->type_name("HZ")
      ->group(group);
  app.add_option("--low-pass", p.lowPass, "Remove what lies above this frequency in Hz [none]")
      ->type_name("HZ")
      ->group(group);
  app.add_option("--notch", o.notches,
                 "Stop bands, 4 Hz wide if not said; gentle edges: --line-noise removes a line "
                 "better [none]")
      ->type_name("HZ[:WIDTH]")
      ->allow_extra_args(false)
      ->delimiter(',')
      ->check(problemWithNotch)
      ->group(group);
  CLI::Option* decimate = app.add_option("--decimate", p.decimate,
                                         "Keep every N-th sample, behind a low-pass at the new Nyquist "
                                         "frequency [1]")
                              ->type_name("N")
                              ->check(CLI::Range(1, largestDecimation))
                              ->group(group);
  app.add_option("--rate", p.rate, "The same, told as the new sampling frequency in Hz")
      ->type_name("HZ")
      ->excludes(decimate)
      ->group(group);
  app.add_flag("--average-reference", p.averageReference,
               "Subtract the mean of the EEG channels from each of them")
      ->group(group);
  app.add_option("--scale", p.scale, "Multiply by 10^N, N from 0 to 10; units stay as they are named [0]")
      ->type_name("N")
      ->check(CLI::Range(0, largestScale))
      ->group(group);
}

void declareFiles(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Files";
  CorrectParameters& p = o.parameters;
  CLI::Option* output = app.add_option("-o,--output", p.output,
                                       "Output; its extension chooses the format: .vhdr, .edf, .bdf, .ctc")
                            ->type_name("FILE")
                            ->group(group);
  app.add_flag("--bids", p.bids,
               "IN belongs to a BIDS dataset: write to its derivatives/emeg, with events and "
               "channels tables; channel types come from its channels.tsv")
      ->group(group)
      ->excludes(output);
  app.add_flag("--force", p.force, "Replace existing output files")->group(group);
  app.add_flag("--allow-uncorrected", p.allowUncorrected,
               "Write the output even when no scanner sequence was found")
      ->group(group);
  app.add_option("--scratch", p.scratch,
                 "Folder for temporary files, with room for three copies [the output's]")
      ->type_name("FOLDER")
      ->check(CLI::ExistingDirectory)
      ->group(group);
}

void declareMessages(CLI::App& app, CorrectOptions& o) {
  const char* const group = "Messages";
  CorrectParameters& p = o.parameters;
  CLI::Option* quiet =
      app.add_flag("--quiet", p.quiet, "No progress and no notes: the summary, warnings and errors")
          ->group(group);
  app.add_flag("--verbose", p.verbose, "Also the lines of the converter's log")
      ->group(group)
      ->excludes(quiet);
  app.add_flag("--json", p.json, "Print the content of the sidecar file on the standard output")
      ->group(group);
}

CorrectParameters parametersOf(const CorrectOptions& options) {
  CorrectParameters parameters = options.parameters;
  parameters.volumeWise = !options.sliceWise;
  if (!options.interval.empty()) parameters.interval = intervalIn(options.interval);
  for (const std::string& text : options.notches)
    if (const std::optional<Notch> notch = notchIn(text)) parameters.notches.push_back(*notch);
  return parameters;
}

int runCorrect(const CorrectOptions& options, std::ostream& out, std::ostream& err) {
  const CorrectParameters parameters = parametersOf(options);
  RunReport report(err, parameters.quiet, parameters.verbose);
  const InterruptWatch watch;
  try {
    const CorrectionResult result = correctRecording(parameters, report);
    report.clearProgress();
    if (parameters.json)
      out << result.sidecar;
    else
      printSummary(out, result, parameters);
    return report.warnings().empty() ? correctedWell : correctedWithWarnings;
  } catch (const UnusableInput& error) {
    report.error(error.what());
    return unusable;
  } catch (const Interrupted& interrupted) {
    report.error("interrupted; nothing was written.");
    return signalled + interrupted.signal();
  } catch (const std::bad_alloc&) {
    report.error(
        "not enough memory; nothing was written. Choose a part of the recording with --interval START:END.");
  } catch (const std::exception& error) {
    report.error(error.what());
  }
  return failed;
}

} // namespace

Command addCorrectCommand(CLI::App& program) {
  auto options = std::make_shared<CorrectOptions>();
  CLI::App* app = program.add_subcommand("correct", description);
  app->footer(footer);
  app->add_option("IN", options->parameters.input, "The recording")->required();
  declareCorrection(*app, *options);
  declareTiming(*app, *options);
  declareSelection(*app, *options);
  declareProcessing(*app, *options);
  declareFiles(*app, *options);
  declareMessages(*app, *options);
  return {app, [options](std::ostream& out, std::ostream& err) { return runCorrect(*options, out, err); }};
}

} // namespace emeg
