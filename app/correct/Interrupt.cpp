#include "app/correct/Interrupt.h"

#include <array>
#include <csignal>

namespace emeg {

namespace {

constexpr std::array<int, 3> watchedSignals = {SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t caughtSignal = 0;
std::array<struct sigaction, watchedSignals.size()> previousActions;

void noteSignal(int signal) {
  caughtSignal = signal;
}

} // namespace

InterruptWatch::InterruptWatch() {
  caughtSignal = 0;
  struct sigaction action {};
  action.sa_handler = noteSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (size_t i = 0; i < watchedSignals.size(); ++i) {
    sigaction(watchedSignals[i], nullptr, &previousActions[i]);
    // What the caller ignores stays ignored: `nohup` and background jobs rely on it.
    if (previousActions[i].sa_handler != SIG_IGN) sigaction(watchedSignals[i], &action, nullptr);
  }
}

InterruptWatch::~InterruptWatch() {
  for (size_t i = 0; i < watchedSignals.size(); ++i)
    sigaction(watchedSignals[i], &previousActions[i], nullptr);
}

void InterruptWatch::check() {
  if (caughtSignal != 0) throw Interrupted(caughtSignal);
}

} // namespace emeg
