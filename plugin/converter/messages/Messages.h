#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace emeg {

/// The progress lines of one run: a buffer of 512 characters that starts with the run's prefix; every message
/// replaces the one before it behind the prefix, and the whole buffer goes to the host's log.
class ProgressLog {
public:
  static constexpr size_t capacity = 512;

  explicit ProgressLog(const char* logPrefix);

  /// Formats the message behind the prefix and logs the line. What does not fit the buffer is cut.
#if defined(__GNUC__)
  __attribute__((format(printf, 2, 3)))
#endif
  void
  logProgress(const char* format, ...);

  const char* logBuffer() const {
    return buffer_.data();
  }
  const char* logMessage() const {
    return buffer_.data() + prefixLength_;
  }

private:
  std::array<char, capacity> buffer_{};
  size_t prefixLength_ = 0;
};

/// Reporting and stopping in one statement: all of these return false.

/// An empty log line, then "Plugin execution was aborted.".
bool abortRun(ProgressLog& log);

/// Shows the text in a message box.
bool showError(const std::string& text);

/// Shows context, "<br>", the text of the C library's current error number and ".".
bool reportFileError(const char* context);

/// The text for a C library error number. A number that is not listed, 0 included, gives "Attempt to read
/// beyond the end of file": a short read at the end of a file leaves the number unset.
const char* errorTextOf(int errorNumber);

} // namespace emeg
