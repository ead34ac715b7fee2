#include "tests/run/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace emeg::test {
namespace {

constexpr int couldNotStart = 126;

bool redirect(const std::filesystem::path& file, int flags, int target) {
  const int opened = open(file.c_str(), flags, 0666);
  if (opened < 0) return false;
  const bool done = dup2(opened, target) == target;
  if (opened != target) close(opened);
  return done;
}

[[noreturn]] void become(const ChildProcess& child, const std::filesystem::path& standardOutput,
                         const std::filesystem::path& standardError, char* const* arguments) {
  constexpr int newFile = O_WRONLY | O_CREAT | O_TRUNC;
  if (!redirect(child.input, O_RDONLY, STDIN_FILENO) || !redirect(standardOutput, newFile, STDOUT_FILENO) ||
      !redirect(standardError, newFile, STDERR_FILENO) || chdir(child.folder.c_str()) != 0)
    _exit(couldNotStart);
  for (const auto& [name, value] : child.environment) setenv(name.c_str(), value.c_str(), 1);
  if (child.beforeStart) child.beforeStart();
  execv(child.program.c_str(), arguments);
  _exit(couldNotStart);
}

/// Status of a child that has ended or is ended now because its time is over.
int awaitEnd(pid_t process, std::chrono::seconds timeLimit) {
  const auto end = std::chrono::steady_clock::now() + timeLimit;
  for (;;) {
    int status = 0;
    const pid_t ended = waitpid(process, &status, WNOHANG);
    if (ended < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    if (ended == process) return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    if (std::chrono::steady_clock::now() > end) {
      kill(process, SIGKILL);
      waitpid(process, &status, 0);
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

} // namespace

ChildResult runChild(const ChildProcess& child, const std::filesystem::path& standardOutput,
                     const std::filesystem::path& standardError) {
  std::vector<std::string> words{child.program.string()};
  words.insert(words.end(), child.arguments.begin(), child.arguments.end());
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  const pid_t process = fork();
  if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process == 0) become(child, standardOutput, standardError, arguments.data());
  return {awaitEnd(process, child.timeLimit)};
}

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace emeg::test
