#include "tests/TestFolder.h"
#include "tests/app/SimulatedFiles.h"
#include "tests/app/correct/MemoryRecording.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace emeg {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Starts `emeg correct INPUT --bcg` and sends it a signal when its messages hold `words`. Returns its exit
/// status, 128
/// + signal when a signal ended it.
int interruptAt(const std::string& input, const std::string& messages, const std::string& words, int signal) {
  std::ofstream(messages).close();
  const pid_t child = fork();
  if (child == 0) {
    const int file = open(messages.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    dup2(file, STDERR_FILENO);
    dup2(file, STDOUT_FILENO);
    std::signal(SIGINT, SIG_DFL);
    execl(EMEG_PROGRAM, "emeg", "correct", input.c_str(), "--bcg", "--verbose", "--memory", "0", nullptr);
    _exit(126);
  }
  int status = 0;
  bool isSent = false;
  for (int tries = 0; tries < 60000; ++tries) {
    if (!isSent && bytesOf(messages).find(words) != std::string::npos) {
      kill(child, signal);
      isSent = true;
    }
    if (waitpid(child, &status, WNOHANG) == child)
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  return -1;
}

/// A recording that takes a second or so.
class Interruption : public testing::Test {
protected:
  Interruption() {
    std::filesystem::create_directory(folder / "data");
    const auto recording = copyOf(heartRecording());
    for (size_t c = 0; c < 24; ++c) {
      const std::vector<double> values = recording->samples[c % 6];
      std::string name = "E";
      name += std::to_string(c);
      recording->addChannel(name, ChannelKind::Eeg,
                            [&values](int64_t t) { return values[static_cast<size_t>(t)]; });
    }
    recording->save(input);
  }

  std::vector<std::string> namesInData() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "data"))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  const TestFolder folder;
  const std::string input = folder / "data/run.vhdr";
  const std::string messages = folder / "messages.txt";
};

} // namespace

TEST_F(Interruption, CtrlCLeavesNothing) {
  for (const char* moment :
       {"Reading", "Finding the scans", "Finding heart beats", "Removing the gradient artifact"}) {
    EXPECT_EQ(interruptAt(input, messages, moment, SIGINT), 128 + SIGINT) << moment;
    EXPECT_THAT(bytesOf(messages), HasSubstr("nothing was written")) << moment;
    EXPECT_THAT(namesInData(), ElementsAre("run.eeg", "run.vhdr", "run.vmrk")) << moment;
  }
}

TEST_F(Interruption, AKilledRunLeavesNothingUnderAFinalNameAndTheNextRunWorks) {
  EXPECT_EQ(interruptAt(input, messages, "Finding the scans", SIGKILL), 128 + SIGKILL);
  const std::vector<std::string> left = namesInData();
  ASSERT_EQ(left.size(), 4u);
  EXPECT_THAT(left[0], HasSubstr(".emeg-scratch-"));

  const ProgramRun next = runEmeg({"correct", input, "--bcg"});
  EXPECT_EQ(next.status, 0) << next.err;
  EXPECT_THAT(next.err, HasSubstr(left[0] + "\" was left by a run that was killed; it may be removed"));
  EXPECT_TRUE(std::filesystem::exists(folder / "data/run_GRA_BCG.vhdr"));
}

} // namespace emeg
