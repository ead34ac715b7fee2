#include "host/CommandLine.h"

#include <CLI/CLI.hpp>

#include <string>

namespace emeg {
namespace {

constexpr const char* description =
    R"(A stand-in for the Lumetra workstation: loads a plug-in, runs it and shows its dialogues on the terminal.

An empty line takes the default that is shown, the end of the input (Ctrl-D) cancels a question.)";

constexpr const char* footer = R"(
With --answers nobody has to type. The file is a JSON object; every key may be left out:

  {
    "files": {"*.ccd": null, "*.prt": null, "*.ctc": "run1.ctc"},
    "inOrder": [1, "no"],
    "prompts": [{"prompt": "Window half-length", "answer": 150, "repeat": true}],
    "parameters": {"integers": {"0": 150}, "floats": {"2": 50.5}},
    "version": [2, 1, 0]
  }

  files       the path chosen in a file dialogue, by its pattern; null or left out: cancelled
  inOrder     answers to the questions that no entry of "prompts" fits, one after the other
  prompts     answers to questions whose text contains "prompt"; each is used once, or always with "repeat"
  parameters  values of the plug-in dialogue, by index; left out: -1
  version     the version that the host reports (default 2.1.0)

An answer is a number, a text, "yes", "no", true or false; "default" takes the default, null cancels. Numbers are
handed over even when they are out of bounds. A question without an answer is cancelled, with a note. Relative paths
start at the current folder.

Example, with the answers above in answers.json:

  lumetra ./EMEGArtifactPlugin.so --answers answers.json --transcript calls.jsonl

calls.jsonl then holds one JSON object per call of the plug-in, with arguments and answer, and at last what execute
returned.

Exit status: 0 when execute returned true, 1 when it returned false, 2 when the arguments, the plug-in, the answers or
the transcript cannot be used.)";

} // namespace

std::optional<CommandLine> readCommandLine(int argc, const char* const* argv, int& exitStatus) {
  CLI::App app(description, "lumetra");
  app.footer(footer);
  CommandLine line;
  std::string plugin, answers, transcript;
  app.add_option("PLUGIN", plugin, "The plug-in library to run")->required();
  const CLI::Option* answersOption =
      app.add_option("--answers", answers, "Take the answers from this file, not from the terminal")
          ->type_name("FILE.json");
  const CLI::Option* transcriptOption =
      app.add_option("--transcript", transcript, "Write every call to this file, one JSON object per line")
          ->type_name("FILE");
  app.add_flag("--quiet", line.quiet,
               "Do not show log lines and message boxes, nor questions answered by --answers");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    exitStatus = app.exit(error) == exitSucceeded ? exitSucceeded : exitUnusable;
    return std::nullopt;
  }
  line.plugin = plugin;
  if (answersOption->count() > 0) line.answers = answers;
  if (transcriptOption->count() > 0) line.transcript = transcript;
  return line;
}

} // namespace emeg
