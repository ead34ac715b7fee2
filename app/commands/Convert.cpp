#include "app/commands/Convert.h"

#include "app/ExitStatus.h"
#include "app/commands/ProgressLine.h"
#include "files/exchange/RecordingReader.h"
#include "files/exchange/RecordingWriter.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <fmt/ostream.h>
#include <memory>
#include <string>
#include <vector>

namespace emeg {

namespace {

const char* const description = "Convert a recording to another format, markers included";

const char* const footer = R"(The extensions choose the formats:
  read      .ctc (with .ccd and .prt), .vhdr (BrainVision), .edf, .bdf, .set (EEGLAB)
  written   .ctc (32-bit floats, with .ccd and .prt), .vhdr (32-bit floats), .edf (EDF+, 16-bit
            integers), .bdf (BDF+, 24-bit integers)

EDF and BDF get the smallest range that holds each channel; integers of a source that fit stay
as they are. What a format cannot hold is said. Existing files stay unless --force is given; the
output appears when it is complete. Memory does not grow with the recording's length.

Exit status: 0 done, 1 the output could not be written, 2 wrong arguments or an unreadable input.

Examples:
  emeg convert run1.ctc run1.vhdr
  emeg convert run1.set run1.bdf --force
  emeg convert sleep.edf eeg.vhdr --channels Fp1,Fp2,Cz
)";

struct ConvertOptions {
  std::string input, output;
  OpenOptions open;
  bool force = false;
  bool quiet = false;
};

void warn(std::ostream& err, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings) fmt::print(err, "emeg convert: note: {}\n", warning);
}

/// The input turned out to be unreadable on the way.
class UnreadableInput : public RecordingError {
  using RecordingError::RecordingError;
};

void readBlock(RecordingReader& reader, int64_t first, int64_t count, std::vector<double>& values) {
  try {
    reader.read(first, count, values);
  } catch (const RecordingError& error) {
    throw UnreadableInput(error.what());
  }
}

void copySamples(RecordingReader& reader, RecordingWriter& writer, ProgressLine& progress) {
  const RecordingHeader& header = reader.header();
  const int64_t blockLength = convenientBlockLength(header.nrOfChannels());
  std::vector<double> values;
  for (int64_t first = 0; first < header.nrOfTimePoints; first += blockLength) {
    const int64_t count = std::min(blockLength, header.nrOfTimePoints - first);
    values.resize(static_cast<size_t>(count) * header.channels.size());
    readBlock(reader, first, count, values);
    writer.write(count, values);
    progress.report(static_cast<double>(first + count) / static_cast<double>(header.nrOfTimePoints));
  }
}

int runConvert(const ConvertOptions& options, std::ostream& out, std::ostream& err) {
  std::unique_ptr<RecordingReader> reader;
  std::unique_ptr<RecordingWriter> writer;
  try {
    reader = openRecording(options.input, options.open);
    const RecordingHeader& header = reader->header();
    if (!options.quiet) warn(err, header.warnings);
    WriteOptions write;
    write.overwrite = options.force;
    if (needsRanges(options.output, header)) {
      ProgressLine progress(err, "Finding the range of each channel");
      write.ranges = measureRanges(*reader, [&progress](double finished) { progress.report(finished); });
    }
    writer = createRecording(options.output, header, write);
  } catch (const RecordingError& error) {
    fmt::print(err, "emeg convert: {}\n", error.what());
    return unusable;
  }

  try {
    {
      ProgressLine progress(err, "Converting");
      copySamples(*reader, *writer, progress);
    }
    writer->finish();
  } catch (const UnreadableInput& error) {
    fmt::print(err, "emeg convert: {}\n", error.what());
    return unusable;
  } catch (const RecordingError& error) {
    fmt::print(err, "emeg convert: {}\n", error.what());
    return failed;
  }
  if (options.quiet) return succeeded;
  warn(err, writer->warnings());
  const RecordingHeader& header = reader->header();
  fmt::print(out, "{}: {} channel{}, {:.3f} s at {} Hz, {} marker{}\n", options.output, header.nrOfChannels(),
             header.nrOfChannels() == 1 ? "" : "s", header.seconds(), header.samplingFrequency,
             header.markers.size(), header.markers.size() == 1 ? "" : "s");
  return succeeded;
}

} // namespace

Command addConvertCommand(CLI::App& program) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* app = program.add_subcommand("convert", description);
  app->footer(footer);
  app->add_option("IN", options->input, "The recording to read")->required();
  app->add_option("OUT", options->output, "The recording to write")->required();
  app->add_option("--channels", options->open.channels,
                  "Names of the channels to convert, in this order [all]")
      ->type_name("NAME,NAME")
      ->allow_extra_args(false)
      ->delimiter(',');
  app->add_flag("--force", options->force, "Replace existing files");
  app->add_flag("--quiet,-q", options->quiet, "Say nothing but errors");
  return {app, [options](std::ostream& out, std::ostream& err) { return runConvert(*options, out, err); }};
}

} // namespace emeg
