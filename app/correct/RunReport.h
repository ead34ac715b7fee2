#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

namespace emeg {

/// What a run says while it works, all of it on the error stream: a progress line with the time left on a
/// terminal, one line per step elsewhere; notes, warnings and errors with colours on a terminal (not with
/// NO_COLOR set).
class RunReport {
public:
  RunReport(std::ostream& err, bool quiet, bool verbose);
  ~RunReport();
  RunReport(const RunReport&) = delete;
  RunReport& operator=(const RunReport&) = delete;

  /// A new step begins: "Reading run1.vhdr".
  void step(const std::string& name);
  /// The finished part of the whole run, 0 ... 1.
  void progress(double finished);
  /// A line for --verbose.
  void detail(const std::string& line);

  /// Worth knowing; no reason to distrust the result.
  void note(const std::string& text);
  void warning(const std::string& text);
  void error(const std::string& text);
  /// The progress line goes, so that other text can follow.
  void clearProgress();

  const std::vector<std::string>& notes() const { return notes_; }
  const std::vector<std::string>& warnings() const { return warnings_; }
  const std::vector<std::string>& log() const { return log_; }

private:
  using Clock = std::chrono::steady_clock;
  void say(const char* colour, const char* kind, const std::string& text);

  std::ostream& err_;
  bool quiet_, verbose_, isTerminal_, hasColours_;
  bool lineIsOpen_ = false;
  std::string stepName_;
  std::vector<std::string> notes_, warnings_, log_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point lastShown_{};
};

} // namespace emeg
