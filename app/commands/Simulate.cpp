#include "app/commands/Simulate.h"

#include "app/ExitStatus.h"
#include "app/commands/SimulateOptions.h"
#include "app/commands/SimulateParameters.h"
#include "app/simulation/GradientArtifact.h"
#include "app/simulation/SimulatedRecording.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>
#include <sstream>
#include <string>

namespace emeg {

namespace {

const char* const description =
    "Simulate an EEG recording with MR gradient or heart beat artifacts whose truth is known";

const char* const footer = R"(Presets:
  gap         20 slices of 75.0142 ms per volume, a pause after each volume (TR 1.8003371 s)
  continuous  25 slices of 72.0227 ms per volume and 4.3 ms of dead time, no pause
  bcg         heart beats in the magnet, no scanning
  both        the scan of gap, and heart beats
Scans whose timing is hard to see:
  fill         25 slices of 72.0227 ms that their readout fills: no quiet but 4.3 ms per volume
  twobursts    20 slices of 75.0142 ms with two bursts each, a pause after each volume
  equidistant  25 slices of 72.0227 ms without dead time; the first one differs by 10 %
  multiband    12 excitations of 62.5113 ms with about 6 ms of quiet between them, no dead time
  manyslices   120 slices of 25.0061 ms per volume and 50.2 ms of dead time

Below 4000 Hz the amplifier passes 560 Hz, the readout lies at 500 Hz (300 Hz with twobursts and
manyslices; all of these lower below 2000 Hz) and the artifact drifts by 1 % RMS; from 4000 Hz on it passes 250 Hz, the readout lies
at 220 Hz and nothing drifts.

The extension of OUT chooses the format: .ctc, .vhdr (BrainVision, with .eeg and .vmrk), .edf
(EDF+, simulated twice: the first time to find the range) or .bdf (BDF+, steps of 1/32 uV).

Written beside OUT (all voltages in microvolts, all times in seconds from the first sample):
  OUT.ccd         channel names (.ctc only)
  OUT.prt         a protocol with the conditions Rest and Task (.ctc only; else they are markers)
                  and the scanner's own markers (--markers), which lie on samples
  OUT_truth.json  every parameter, the exact times of scans and heart, RMS of the parts
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
  emeg simulate equidistant run6.vhdr --first-slice 0 --markers volume
      slices that are all alike: where a volume begins only the markers tell
  emeg simulate gap run7.edf --scans 3 --pause 6 --volumes 20
      three scans of 20 volumes, six seconds apart
  emeg simulate continuous run8.vhdr --cut-start 0.9 --ends-in-scan --jitter-us 10 --spikes 2
      begins and ends within the scan; volumes come 10 us early or late; two spikes
  emeg simulate fill run9.bdf --dropouts 1 --clip-uv 2000
      the recording is 0 for 0.3 s somewhere, and the amplifier too small for the artifact
  emeg simulate gap run4.ctc --volumes 40 --slices 32 --slice-ms 60.1 --burst-ms 38 --gap-ms 80
)";

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
    text << ", ";
    if (p.gradient->nrOfScans > 1) text << p.gradient->nrOfScans << " scans of ";
    text << volumes << " volumes of " << p.gradient->nrOfSlicesPerVolume << " slices";
  }
  if (p.heart) text << ", heart at " << p.heart->beatsPerMinute << " beats per minute";
  return text.str();
}

int runSimulate(const CLI::App& app, const SimulateOptions& options, std::ostream& out, std::ostream& err) {
  const SimulationParameters parameters = parametersOf(options);
  const std::string wrong = problemWithOptions(app, options, parameters);
  if (!wrong.empty()) {
    err << "emeg simulate: " << wrong << "\n";
    return unusable;
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
  return succeeded;
}

} // namespace

Command addSimulateCommand(CLI::App& program) {
  auto options = std::make_shared<SimulateOptions>();
  CLI::App* app = program.add_subcommand("simulate", description);
  app->footer(footer);
  declareSimulateOptions(*app, *options);
  return {app, [app, options](std::ostream& out, std::ostream& err) {
            return runSimulate(*app, *options, out, err);
          }};
}

} // namespace emeg
