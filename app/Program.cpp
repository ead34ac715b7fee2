#include "app/Program.h"

#include "app/ExitStatus.h"
#include "app/commands/Command.h"
#include "app/commands/Completion.h"
#include "app/commands/Convert.h"
#include "app/commands/Correct.h"
#include "app/commands/Evaluate.h"
#include "app/commands/Info.h"
#include "app/commands/Manual.h"
#include "app/commands/Simulate.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>

namespace emeg {

namespace {

int parseAndRun(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  CLI::App program("emeg: recordings of the brain's electric activity made inside an MR scanner", "emeg");
  program.set_version_flag("--version", std::string("emeg ") + EMEG_VERSION);
  program.require_subcommand(1);
  program.footer("`emeg COMMAND --help` explains a command, with examples.");
  const std::vector<Command> commands = {addCorrectCommand(program),  addConvertCommand(program),
                                         addInfoCommand(program),     addSimulateCommand(program),
                                         addEvaluateCommand(program), addCompletionCommand(program),
                                         addManualCommand(program)};

  try {
    // The parser takes its arguments from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    program.parse(reversed);
  } catch (const CLI::ParseError& error) {
    return program.exit(error, out, err) == 0 ? succeeded : unusable;
  }

  const auto chosen = std::find_if(commands.begin(), commands.end(),
                                   [](const Command& command) { return command.parser->parsed(); });
  return chosen == commands.end() ? unusable : chosen->run(out, err);
}

} // namespace

int runProgram(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    return parseAndRun(arguments, out, err);
  } catch (const std::bad_alloc&) {
    err << "emeg: there is not enough memory; close other programs, or take a shorter recording.\n";
  } catch (const std::exception& error) {
    err << "emeg: " << error.what() << "\n";
  }
  return failed;
}

} // namespace emeg
