#include "app/commands/ProgressLine.h"

#include <cmath>
#include <fmt/format.h>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace emeg {

namespace {

constexpr auto timeBetweenReports = std::chrono::milliseconds(200);
constexpr double leastForAnEstimate = 0.01;

} // namespace

bool isOnTerminal(const std::ostream& err) {
  return &err == &std::cerr && isatty(STDERR_FILENO) == 1;
}

ProgressLine::ProgressLine(std::ostream& err, std::string task)
    : err_(err), task_(std::move(task)), visible_(isOnTerminal(err)) {}

ProgressLine::~ProgressLine() {
  if (shown_) err_ << "\r\x1b[K" << std::flush;
}

void ProgressLine::report(double finished) {
  const auto now = Clock::now();
  if (!visible_ || now - last_ < timeBetweenReports) return;
  last_ = now;
  shown_ = true;
  std::string line = fmt::format("\r{}: {:3.0f} %", task_, 100 * finished);
  if (finished > leastForAnEstimate) {
    const double elapsed = std::chrono::duration<double>(now - start_).count();
    const auto left = std::lround(elapsed * (1 - finished) / finished);
    line += fmt::format(", {}:{:02} left", left / 60, left % 60);
  }
  err_ << line << "\x1b[K" << std::flush;
}

} // namespace emeg
