#include "host/Answers.h"
#include "host/CommandLine.h"
#include "host/HostFunctions.h"
#include "host/PluginLibrary.h"
#include "host/ScreenText.h"
#include "host/ScriptedUser.h"
#include "host/Terminal.h"
#include "host/Transcript.h"

#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

using namespace emeg;

namespace {

int unusable(const std::string& problem) {
  std::cerr << "lumetra: " << problem << '\n';
  return exitUnusable;
}

void introduce(const PluginDescription& plugin) {
  std::cout << "Plug-in:     " << screenText(plugin.name)
            << "\nDescription: " << screenText(plugin.description)
            << "\nVersion:     " << screenText(plugin.version)
            << "\nAuthor:      " << screenText(plugin.author) << '\n';
  if (!plugin.helpFile.empty()) std::cout << "Help file:   " << screenText(plugin.helpFile) << '\n';
  if (!plugin.guiScript.empty()) std::cout << "GUI script:  " << screenText(plugin.guiScript) << '\n';
  std::cout << '\n' << std::flush;
}

int runPlugin(const CommandLine& line, HostSession& session) {
  const HostSessionScope scope(session);
  std::string problem;
  const std::unique_ptr<PluginLibrary> library = PluginLibrary::load(line.plugin, problem);
  if (!library) return unusable(problem);
  introduce(library->description());

  const auto finished = [&](bool succeeded) {
    session.transcript.write({{"call", "execute"}, {"answer", succeeded}});
  };
  const PluginLibrary::Outcome outcome = library->run(finished, problem);
  if (outcome == PluginLibrary::Outcome::NoObject) return unusable("the plug-in created no object");
  if (!problem.empty()) std::cerr << "lumetra: " << problem << '\n';
  return outcome == PluginLibrary::Outcome::Succeeded ? exitSucceeded : exitFailed;
}

int run(const CommandLine& line) {
  std::string problem;
  Answers answers;
  if (line.answers) {
    std::optional<Answers> given = Answers::load(*line.answers, problem);
    if (!given) return unusable(problem);
    answers = std::move(*given);
  }
  Transcript transcript;
  if (line.transcript) {
    std::error_code error;
    if (line.answers && std::filesystem::equivalent(*line.transcript, *line.answers, error))
      return unusable("the transcript would overwrite the answers in " + line.answers->string());
    if (!transcript.open(*line.transcript, problem)) return unusable(problem);
  }

  std::ostream* screen = line.quiet ? nullptr : &std::cout;
  std::unique_ptr<User> user;
  if (line.answers)
    user = std::make_unique<ScriptedUser>(answers, std::cerr, screen);
  else
    user = std::make_unique<Terminal>(std::cin, std::cout);

  HostSession session{*user, answers, transcript, screen, std::cerr};
  const int status = runPlugin(line, session);
  if (status != exitUnusable)
    for (const std::string& sentence : answers.unused()) std::cerr << "lumetra: " << sentence << '\n';
  if (!transcript.isComplete())
    return unusable("the transcript " + line.transcript->string() +
                    " is incomplete: it could not be written");
  return status;
}

} // namespace

int main(int argc, char** argv) {
  try {
    int exitStatus = exitSucceeded;
    const std::optional<CommandLine> line = readCommandLine(argc, argv, exitStatus);
    return line ? run(*line) : exitStatus;
  } catch (const std::exception& exception) {
    return unusable(exception.what());
  }
}
