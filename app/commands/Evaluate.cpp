#include "app/commands/Evaluate.h"

#include "app/ExitStatus.h"
#include "app/commands/EvaluationTables.h"
#include "app/evaluation/EvaluatedRecording.h"
#include "app/evaluation/HeartPulses.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <memory>
#include <string>

namespace emeg {

namespace {

const char* const footer =
    R"(The truth is what `emeg simulate` wrote beside the recording; its clean (and pulse) file and the
recording itself are looked up beside it.

Gradient artifact (all presets but bcg): RMS over the scan, or over all scans of the recording and, as
a range, over each; "outside" is what changed more than one volume away from every scan. Clean means without gradient artifact: the heart beat
artifact counts as clean where no heart pulses are marked, and as residual where they are.

Heart beat artifact (presets bcg, both): the heart pulses are the recording's "HeartPulseTriggers" (of
NAME.ctc: those in NAME_ArtifactsTriggers.prt beside it). A pulse is right within 100 ms of a beat plus one delay per
recording, the median; each belongs to one beat at most.
  sensitivity             part of the beats that were found, of those between the first and the
                          last pulse
  positive predictivity   part of the pulses that are beats
  artifact explained      1 - sum((artifact - estimate)^2) / sum(artifact^2) from the first to the
                          last pulse, per channel and with the sums over all of them; the artifact
                          is not filtered. The estimate is what the correction took away: EEG and
                          artifact minus the corrected recording (what was left of a gradient
                          artifact, or taken for one, counts against it). With --before, a file that
                          only the gradient correction went over, it is that file minus the
                          corrected recording: the heart beat correction alone
Without pulses the artifact is compared over the whole recording and beats are not judged.

Exit status: 0 done, 1 a file cannot be read or written, 2 wrong arguments.

Examples:
  emeg simulate both demo.vhdr
  emeg correct demo.vhdr --bcg
  emeg evaluate demo_GRA_BCG.vhdr --truth demo_truth.json
  emeg simulate gap run1.ctc
  lumetra EMEGArtifactPlugin.so --answers answers.json --transcript calls.jsonl
  emeg evaluate run1_GRA.ctc --truth run1_truth.json --transcript calls.jsonl
  emeg evaluate run2_GRA_BCG.ctc --truth run2_truth.json --before run2_GRA.ctc --json -
)";

struct EvaluateOptions {
  std::string corrected;
  std::string truth;
  std::string transcript;
  std::string json;
  std::string before;
};

void judgeHeart(const EvaluateOptions& options, Evaluation& evaluation) {
  const std::string& correctedPath = options.corrected;
  const double fs = EvaluatedRecording(correctedPath).samplingFrequency();
  evaluation.triggerFile = triggerFileOf(correctedPath);
  evaluation.heartPulses = readHeartPulses(correctedPath, fs);
  double from = 0;
  double to = evaluation.truth.seconds;
  if (evaluation.heartPulses && evaluation.heartPulses->size() >= 2) {
    const std::vector<double>& pulses = *evaluation.heartPulses;
    evaluation.beats = compareBeats(evaluation.truth.beatTimes, pulses, beatTolerance);
    from = pulses.front();
    to = pulses.back();
  }
  evaluation.explained = measureExplained(correctedPath, evaluation.truth, from, to, options.before);
}

Evaluation measure(const EvaluateOptions& options) {
  Evaluation evaluation;
  evaluation.truth = readSimulatedTruth(options.truth);
  evaluation.hasTranscript = !options.transcript.empty();
  if (evaluation.hasTranscript) evaluation.foundSequence = readDetectedSequence(options.transcript);
  if (evaluation.truth.hasHeart()) judgeHeart(options, evaluation);
  if (evaluation.truth.hasScan())
    evaluation.residuals =
        measureResiduals(options.corrected, evaluation.truth, evaluation.heartPulses.has_value());
  return evaluation;
}

int evaluate(const EvaluateOptions& options, std::ostream& out, std::ostream& err) {
  try {
    const Evaluation evaluation = measure(options);
    if (options.json == "-") {
      out << evaluationJson(evaluation);
      return succeeded;
    }
    printEvaluation(out, evaluation);
    if (!options.json.empty()) {
      std::ofstream file(options.json, std::ios::binary);
      file << evaluationJson(evaluation);
      file.close();
      if (!file) throw UnreadableFile("cannot write " + options.json);
    }
    return succeeded;
  } catch (const UnreadableFile& error) {
    err << "emeg evaluate: " << error.what() << "\n";
    return failed;
  }
}

} // namespace

Command addEvaluateCommand(CLI::App& program) {
  CLI::App* parser =
      program.add_subcommand("evaluate", "Measure what a correction found and left of simulated artifacts");
  const auto options = std::make_shared<EvaluateOptions>();
  parser->add_option("CORRECTED", options->corrected, "The corrected recording: .vhdr, .edf, .bdf or .ctc")
      ->required();
  parser->add_option("--truth", options->truth, "The truth file of the simulated recording")->required();
  parser->add_option("--transcript", options->transcript,
                     "Transcript of the host run: shows what was found beside what is true");
  parser->add_option("--before", options->before,
                     "The recording after the gradient correction alone: judges the heart beat correction by "
                     "what it changed there");
  parser->add_option("--json", options->json, "Write the figures as JSON too; - prints them instead");
  parser->footer(footer);
  return {parser, [options](std::ostream& out, std::ostream& err) { return evaluate(*options, out, err); }};
}

} // namespace emeg
