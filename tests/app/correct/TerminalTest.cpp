#include "tests/TestFolder.h"
#include "tests/app/correct/MemoryRecording.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace emeg {

namespace {

using testing::HasSubstr;
using testing::Not;

/// What `emeg correct INPUT ...` shows on a terminal of 80 columns.
std::string shownOnTerminal(const std::string& input, const char* option, bool withoutColours) {
  int terminal = -1;
  winsize size{24, 80, 0, 0};
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    if (withoutColours)
      setenv("NO_COLOR", "1", 1);
    else
      unsetenv("NO_COLOR");
    execl(EMEG_PROGRAM, "emeg", "correct", input.c_str(), "--force", option, nullptr);
    _exit(126);
  }
  std::string shown;
  char buffer[4096];
  for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;)
    shown.append(buffer, static_cast<size_t>(count));
  int status = 0;
  waitpid(child, &status, 0);
  close(terminal);
  EXPECT_TRUE(WIFEXITED(status)) << shown;
  return shown;
}

class Terminal : public testing::Test {
protected:
  Terminal() { copyOf(scanRecording())->save(input); }
  const TestFolder folder;
  const std::string input = folder / "run.vhdr";
};

} // namespace

TEST_F(Terminal, ShowsProgressOnOneLineThatDisappears) {
  const std::string shown = shownOnTerminal(input, "--volume-wise", false);
  EXPECT_THAT(shown, HasSubstr("\r\033[K"));
  EXPECT_THAT(shown, HasSubstr(" %  Removing the gradient artifact"));
  EXPECT_GT(shown.find("Corrected:"), shown.rfind("\r\033[K"));
  for (size_t start = shown.find("\r\033[K"); start != std::string::npos;) {
    const size_t next = shown.find("\r\033[K", start + 1);
    if (next != std::string::npos) {
      EXPECT_LT(next - start, 80u + 4);
    }
    start = next;
  }
}

TEST_F(Terminal, WarningsAreColouredUnlessTheUserWantsNone) {
  const std::string coloured = shownOnTerminal(input, "--bcg", false);
  EXPECT_THAT(coloured, HasSubstr("\033[33mwarning:\033[0m "));
  const std::string plain = shownOnTerminal(input, "--bcg", true);
  EXPECT_THAT(plain, HasSubstr("warning: "));
  EXPECT_THAT(plain, Not(HasSubstr("\033[33m")));
}

TEST_F(Terminal, QuietShowsNoProgress) {
  EXPECT_THAT(shownOnTerminal(input, "--quiet", false), Not(HasSubstr(" %  ")));
}

} // namespace emeg
