#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emeg {

namespace {

using testing::HasSubstr;

/// Every option of the command's help.
std::vector<std::string> optionsInHelp(const std::string& command) {
  const std::string help = runEmeg({command, "--help"}).out;
  std::vector<std::string> options;
  for (size_t at = help.find("\n  "); at != std::string::npos; at = help.find("\n  ", at + 1)) {
    const std::string line = help.substr(at + 3, help.find('\n', at + 1) - at - 3);
    const size_t dashes = line.find("--");
    if (line[0] != '-' || dashes == std::string::npos) continue;
    options.push_back(line.substr(dashes, line.find_first_of(" ,", dashes) - dashes));
  }
  return options;
}

/// The output of a shell command line.
std::string outputOf(const std::string& commandLine, const TestFolder& folder) {
  const std::string file = folder / "output.txt";
  EXPECT_EQ(std::system((commandLine + " > " + file + " 2>&1").c_str()), 0) << bytesOf(file);
  return bytesOf(file);
}

} // namespace

TEST(Completion, EveryShellKnowsEveryOptionOfEveryCommand) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const ProgramRun script = runEmeg({"completion", shell});
    EXPECT_EQ(script.status, 0);
    for (const char* command : {"correct", "convert", "info", "simulate", "evaluate"}) {
      const auto options = optionsInHelp(command);
      ASSERT_GE(options.size(), 1u) << command;
      for (const std::string& option : options) {
        const std::string wanted = std::string(shell) == "fish" ? " -l " + option.substr(2) : option;
        EXPECT_THAT(script.out, HasSubstr(wanted)) << shell << " " << command;
      }
    }
  }
}

TEST(Completion, OtherShellsAreWrongUsage) {
  EXPECT_EQ(runEmeg({"completion", "csh"}).status, 2);
}

TEST(Completion, CompletesInBash) {
  const TestFolder folder;
  std::ofstream(folder / "emeg.bash") << runEmeg({"completion", "bash"}).out;
  std::ofstream(folder / "try.bash")
      << "source " << folder / "emeg.bash"
      << "\n"
      << "COMP_WORDS=(emeg cor); COMP_CWORD=1; _emeg; echo ${COMPREPLY[@]}\n"
      << "COMP_WORDS=(emeg correct --line); COMP_CWORD=2; _emeg; echo ${COMPREPLY[@]}\n";
  EXPECT_EQ(outputOf("bash " + (folder / "try.bash"), folder), "correct\n--line-noise\n");
}

TEST(Manual, HoldsEveryOptionWithItsDescription) {
  const ProgramRun page = runEmeg({"man", "correct"});
  EXPECT_EQ(page.status, 0);
  for (std::string option : optionsInHelp("correct")) {
    std::string escaped;
    for (const char letter : option) escaped += letter == '-' ? std::string("\\-") : std::string(1, letter);
    EXPECT_THAT(page.out, HasSubstr(escaped));
  }
  EXPECT_THAT(page.out, HasSubstr(".SS Correction"));
  EXPECT_THAT(page.out, HasSubstr("Exit status"));
}

TEST(Manual, OfTheProgramListsItsCommands) {
  EXPECT_THAT(runEmeg({"man"}).out, HasSubstr(".BR emeg\\-correct (1)"));
}

TEST(Manual, UnknownCommandsAreWrongUsage) {
  EXPECT_EQ(runEmeg({"man", "dance"}).status, 2);
}

} // namespace emeg
