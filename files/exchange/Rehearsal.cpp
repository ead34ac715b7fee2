#include "files/exchange/Rehearsal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace emeg {

namespace {

constexpr unsigned mostSeconds = 60;
/// A pipe takes as much before anybody reads it.
constexpr size_t longestMessage = 4000;

[[noreturn]] void actAndLeave(const std::function<void()>& work, int messages) {
  const rlimit noCoreFile = {0, 0};
  setrlimit(RLIMIT_CORE, &noCoreFile);
  for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGALRM, SIGINT, SIGTERM})
    std::signal(number, SIG_DFL);
  alarm(mostSeconds);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
  try {
    work();
  } catch (const std::exception& error) {
    const std::string_view message = std::string_view(error.what()).substr(0, longestMessage);
    if (write(messages, message.data(), message.size()) < 0) _exit(1);
  }
  _exit(0); // without the libraries' own ends, which may hang
}

} // namespace

RehearsalResult rehearse(const std::function<void()>& work) {
  RehearsalResult result;
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return result; // the work itself must show
  const pid_t copy = fork();
  if (copy == 0) actAndLeave(work, ends[1]);
  close(ends[1]);
  int status = 0;
  pid_t ended = copy < 0 ? -1 : waitpid(copy, &status, 0);
  while (copy > 0 && ended < 0 && errno == EINTR) ended = waitpid(copy, &status, 0);
  if (ended == copy && copy > 0) {
    result.survived = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::array<char, longestMessage> message{};
    const ssize_t length = ::read(ends[0], message.data(), message.size());
    if (length > 0) result.error.assign(message.data(), static_cast<size_t>(length));
  }
  close(ends[0]);
  return result;
}

} // namespace emeg
