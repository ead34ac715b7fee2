#include "app/correct/RunReport.h"

#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <iostream>
#include <sys/ioctl.h>
#include <unistd.h>

namespace emeg {

namespace {

constexpr const char* red = "31";
constexpr const char* yellow = "33";
constexpr const char* blue = "34";
constexpr std::chrono::milliseconds betweenLines{200};

bool leadsToTerminal(const std::ostream& stream) {
  return &stream == &std::cerr && isatty(STDERR_FILENO) == 1;
}

size_t columnsOfTerminal() {
  constexpr size_t usual = 80;
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usual;
  return size.ws_col;
}

std::string timeText(double seconds) {
  const auto whole = std::llround(seconds);
  if (whole < 60) return fmt::format("{} s", whole);
  if (whole < 3600) return fmt::format("{} min {:02} s", whole / 60, whole % 60);
  return fmt::format("{} h {:02} min", whole / 3600, whole / 60 % 60);
}

} // namespace

RunReport::RunReport(std::ostream& err, bool quiet, bool verbose)
    : err_(err), quiet_(quiet), verbose_(verbose), isTerminal_(leadsToTerminal(err)) {
  const char* const noColour = std::getenv("NO_COLOR");
  hasColours_ = isTerminal_ && (noColour == nullptr || *noColour == 0);
}

RunReport::~RunReport() {
  clearProgress();
}

void RunReport::clearProgress() {
  if (lineIsOpen_) err_ << "\r\033[K" << std::flush;
  lineIsOpen_ = false;
}

void RunReport::step(const std::string& name) {
  stepName_ = name;
  lastShown_ = {};
  if (quiet_ || isTerminal_) return;
  err_ << name << "\n" << std::flush;
}

void RunReport::progress(double finished) {
  if (quiet_ || !isTerminal_) return;
  const Clock::time_point now = Clock::now();
  if (now - lastShown_ < betweenLines) return;
  lastShown_ = now;
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  std::string line = fmt::format("{:3.0f} %  {}", 100 * finished, stepName_);
  constexpr double enoughToTell = 0.02;
  if (finished > enoughToTell && elapsed > 1)
    line += fmt::format(", {} left", timeText(elapsed * (1 - finished) / finished));
  err_ << "\r\033[K" << line.substr(0, columnsOfTerminal() - 1) << std::flush;
  lineIsOpen_ = true;
}

void RunReport::detail(const std::string& line) {
  log_.push_back(line);
  if (!verbose_) return;
  clearProgress();
  err_ << "  " << line << "\n";
}

void RunReport::say(const char* colour, const char* kind, const std::string& text) {
  clearProgress();
  if (hasColours_)
    err_ << "\033[" << colour << "m" << kind << ":\033[0m " << text << "\n";
  else
    err_ << "emeg correct: " << kind << ": " << text << "\n";
  err_ << std::flush;
}

void RunReport::note(const std::string& text) {
  notes_.push_back(text);
  if (!quiet_) say(blue, "note", text);
}

void RunReport::warning(const std::string& text) {
  warnings_.push_back(text);
  say(yellow, "warning", text);
}

void RunReport::error(const std::string& text) {
  say(red, "error", text);
}

} // namespace emeg
