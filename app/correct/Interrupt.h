#pragma once

#include <exception>

namespace emeg {

/// The user ended the run (Ctrl-C, SIGTERM). Thrown where the run looks whether it shall go on, so that
/// everything it made is removed on the way out.
class Interrupted : public std::exception {
public:
  explicit Interrupted(int signal) : signal_(signal) {}
  int signal() const { return signal_; }
  const char* what() const noexcept override { return "interrupted"; }

private:
  int signal_;
};

/// While it lives, SIGINT, SIGTERM and SIGHUP only leave a note; afterwards they do again what they did
/// before.
class InterruptWatch {
public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  /// Throws Interrupted when a signal has come.
  static void check();
};

} // namespace emeg
