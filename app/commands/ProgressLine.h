#pragma once

#include <chrono>
#include <ostream>
#include <string>

namespace emeg {

/// True when messages go to a terminal that a person looks at.
bool isOnTerminal(const std::ostream& err);

/// One line on the terminal that says how far the work is and how long it will take; it disappears with this
/// object. Silent when `err` is no terminal.
class ProgressLine {
public:
  ProgressLine(std::ostream& err, std::string task);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// `finished` from 0 to 1.
  void report(double finished);

private:
  using Clock = std::chrono::steady_clock;
  std::ostream& err_;
  std::string task_;
  bool visible_;
  bool shown_ = false;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_ = start_;
};

} // namespace emeg
