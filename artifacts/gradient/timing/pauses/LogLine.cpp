#include "artifacts/gradient/timing/pauses/LogLine.h"

#include <cstdarg>
#include <cstdio>

namespace emeg {

void logLine(const LogLine& log, const char* format, ...) {
  char text[512]; // as long as the longest line of the host's log
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  log(text);
}

} // namespace emeg
