#include "app/commands/Evaluate.h"

#include "app/evaluation/CtcReader.h"
#include "app/evaluation/DetectedSequence.h"
#include "app/evaluation/Residual.h"
#include "converter/messages/Text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>

namespace emeg {

namespace {

constexpr int failed = 1;

const char* const footer =
    R"(The truth is what `emeg simulate` wrote beside the recording; its clean (and pulse) file and the
recording itself are looked up beside it. RMS over the scan; "outside" is what changed more than
one volume before and behind the scan. Clean means without gradient artifact: the heart beat
artifact, if there is one, counts as clean.

Exit status: 0 done, 1 a file cannot be read, 2 wrong arguments.

Example:
  emeg simulate gap run1.ctc
  lumetra EMEGArtifactPlugin.so --answers answers.json --transcript calls.jsonl
  emeg evaluate run1_GRA.ctc --truth run1_truth.json --transcript calls.jsonl
)";

struct EvaluateOptions {
  std::string corrected;
  std::string truth;
  std::string transcript;
};

void printSequence(std::ostream& out, const SimulatedTruth& truth, const std::string& transcript) {
  out << formatText("%-24s%16s", "Scan", "true");
  const auto found = transcript.empty() ? std::nullopt : readDetectedSequence(transcript);
  if (!transcript.empty()) out << "           found";
  out << "\n";
  const auto count = [&](const char* name, int trueValue, int foundValue) {
    out << formatText("  %-22s%16d", name, trueValue);
    if (found) out << formatText("%16d", foundValue);
    out << "\n";
  };
  const auto seconds = [&](const char* name, double trueValue, double foundValue) {
    out << formatText("  %-22s%14.7f s", name, trueValue);
    if (found) out << formatText("%14.7f s", foundValue);
    out << "\n";
  };
  const DetectedSequence s = found.value_or(DetectedSequence());
  count("volumes", truth.nrOfVolumes, s.nrOfVolumes);
  count("slices per volume", truth.nrOfSlicesPerVolume, s.nrOfSlicesPerVolume);
  seconds("volume duration", truth.volumeDuration, s.volumeDuration);
  seconds("slice duration", truth.sliceDuration, s.sliceDuration);
  seconds("first volume", truth.firstVolumeOnset, s.firstTriggerTime);
  if (!transcript.empty() && !found) out << "  No sequence was found.\n";
  out << "\n";
}

int evaluate(const EvaluateOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const SimulatedTruth truth = readSimulatedTruth(options.truth);
    const std::vector<ChannelResidual> residuals = measureResiduals(options.corrected, truth);
    printSequence(out, truth, options.transcript);
    out << formatText("%-12s%16s%16s%16s%16s\n", "Channel", "artifact (uV)", "residual (uV)", "below (dB)",
                      "outside (uV)");
    double least = residuals.front().decibels();
    double most = least;
    for (const ChannelResidual& channel : residuals) {
      least = std::min(least, channel.decibels());
      most = std::max(most, channel.decibels());
      out << formatText("%-12s%16.1f%16.2f%16.1f%16.2f\n", channel.name.c_str(), channel.artifactUv,
                        channel.residualUv, channel.decibels(), channel.outsideUv);
    }
    out << formatText("\nThe residual lies %.1f to %.1f dB below the gradient artifact.\n", least, most);
    return 0;
  } catch (const UnreadableFile& error) {
    err << "emeg evaluate: " << error.what() << "\n";
    return failed;
  }
}

} // namespace

Command addEvaluateCommand(CLI::App& program) {
  CLI::App* parser =
      program.add_subcommand("evaluate", "Measure what a correction left of a simulated gradient artifact");
  const auto options = std::make_shared<EvaluateOptions>();
  parser->add_option("CORRECTED.ctc", options->corrected, "The corrected recording")->required();
  parser->add_option("--truth", options->truth, "The truth file of the simulated recording")->required();
  parser->add_option("--transcript", options->transcript,
                     "Transcript of the host run: shows what was found beside what is true");
  parser->footer(footer);
  return {parser, [options](std::ostream& out, std::ostream& err) { return evaluate(*options, out, err); }};
}

} // namespace emeg
