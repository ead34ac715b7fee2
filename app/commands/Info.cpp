#include "app/commands/Info.h"

#include "app/ExitStatus.h"
#include "app/commands/RecordingSummary.h"
#include "files/exchange/RecordingReader.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace emeg {

namespace {

const char* const description = "Show what a recording holds: format, length, channels, markers";

const char* const footer = R"(Recordings: .ctc, .vhdr (BrainVision), .edf, .bdf, .set (EEGLAB).
A channel's kind is guessed from its type, name and unit; the rule is shown. So are markers that
probably mark the scanner's volumes or slices: those at equal intervals, known names (R128, "T  1",
Scanner, Volume, TR) first.

Exit status: 0 done, 2 wrong arguments or an unreadable recording.

Examples:
  emeg info run1.vhdr
  emeg info run1.set --json
)";

struct InfoOptions {
  std::string input;
  OpenOptions open;
  bool json = false;
};

int runInfo(const InfoOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const auto reader = openRecording(options.input, options.open);
    const RecordingHeader& header = reader->header();
    if (options.json) {
      out << summaryJson(header) << "\n";
    } else {
      out << summaryText(header);
      for (const std::string& warning : header.warnings) err << "emeg info: note: " << warning << "\n";
    }
    return succeeded;
  } catch (const RecordingError& error) {
    err << "emeg info: " << error.what() << "\n";
    return unusable;
  }
}

} // namespace

Command addInfoCommand(CLI::App& program) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* app = program.add_subcommand("info", description);
  app->footer(footer);
  app->add_option("FILE", options->input, "The recording")->required();
  app->add_option("--channels", options->open.channels,
                  "Names of the channels to look at [all]; needed where channels differ in their rates")
      ->type_name("NAME,NAME")
      ->allow_extra_args(false)
      ->delimiter(',');
  app->add_flag("--json", options->json, "The same as JSON");
  return {app, [options](std::ostream& out, std::ostream& err) { return runInfo(*options, out, err); }};
}

} // namespace emeg
