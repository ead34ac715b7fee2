#include "app/commands/Correct.h"

#include "app/ExitStatus.h"
#include "app/commands/CorrectOptions.h"
#include "app/correct/CorrectRun.h"
#include "app/correct/Interrupt.h"
#include "app/correct/Summary.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace emeg {

namespace {

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

int runCorrect(const CorrectParameters& parameters, std::ostream& out, std::ostream& err) {
  RunReport report(err, parameters.quiet, parameters.verbose);
  const InterruptWatch watch;
  try {
    const CorrectionResult result = correctRecording(parameters, report);
    report.clearProgress();
    if (parameters.json)
      out << result.sidecar;
    else
      printSummary(out, result, parameters);
    return report.warnings().empty() ? succeeded : doneWithWarnings;
  } catch (const UnusableInput& error) {
    report.error(error.what());
    return unusable;
  } catch (const Interrupted& interrupted) {
    report.error("interrupted; nothing was written.");
    return endedBySignal + interrupted.signal();
  } catch (const std::exception& error) {
    report.error(error.what());
  }
  return failed;
}

} // namespace

Command addCorrectCommand(CLI::App& program) {
  auto parameters = std::make_shared<CorrectParameters>();
  CLI::App* app = program.add_subcommand("correct", description);
  app->footer(footer);
  app->add_option("IN", parameters->input, "The recording")->required();
  declareCorrectOptions(*app, *parameters);
  return {app,
          [parameters](std::ostream& out, std::ostream& err) { return runCorrect(*parameters, out, err); }};
}

} // namespace emeg
