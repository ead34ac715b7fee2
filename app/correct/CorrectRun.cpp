#include "app/correct/CorrectRun.h"

#include "app/correct/OutputRecording.h"
#include "app/correct/ProgressObserver.h"
#include "app/correct/RecordingSource.h"
#include "app/correct/RunNotes.h"
#include "app/correct/RunStore.h"
#include "app/correct/RunWarnings.h"
#include "engine/Correction.h"

#include <fmt/format.h>
#include <new>

namespace emeg {

namespace {

CorrectionResult run(const CorrectParameters& parameters, RunReport& report) {
  RecordingSource input(parameters);
  CorrectionResult result;
  result.header = input.header();
  result.plan = planCorrection(result.header, parameters);
  result.place = outputPlaceOf(parameters, result.plan);
  checkPlaceIsFree(result.place, parameters.force);
  for (const std::string& note : notesBefore(result, parameters)) report.note(note);

  const RecordingShape shape = result.plan.shapeOf(result.header);
  RunStore store(parameters, result, shape, report);
  ProgressObserver observer(report, result.plan, parameters.input, OutputRecording::needsRanges(result));
  Correction correction(result.plan.settings, shape, store.channels(), observer);

  input.takeInto(correction, result.plan, observer);
  result.inputFiles = input.checksums();
  result.found = correction.find();
  checkWhatWasFound(result, parameters);

  OutputRecording output(parameters, result);
  output.write(correction, input, observer);
  result.found = correction.findings();
  for (const std::string& note : notesOn(result)) report.note(note);
  for (const std::string& warning : warningsOf(result, parameters)) report.warning(warning);
  output.finish(report);
  return result;
}

} // namespace

/// What goes wrong far below is told with the recording's name and what to do.
CorrectionResult correctRecording(const CorrectParameters& parameters, RunReport& report) {
  try {
    return run(parameters, report);
  } catch (const UnusableSettings& error) {
    throw UnusableInput(fmt::format("\"{}\" cannot be corrected so: {}", parameters.input, error.what()));
  } catch (const StoreError& error) {
    throw FailedRun(
        fmt::format("{} Nothing was written. Make room there, choose another folder with --scratch "
                    "FOLDER, or let the recording stay in memory with --memory MB.",
                    error.what()));
  } catch (const RecordingError& error) {
    throw FailedRun(error.what());
  } catch (const std::bad_alloc&) {
    throw FailedRun(
        fmt::format("there is not enough memory to correct \"{}\"; nothing was written. Close other "
                    "programs, keep the samples in a file with --memory 0, or choose a part with "
                    "--interval START:END.",
                    parameters.input));
  }
}

} // namespace emeg
