#pragma once

#include <functional>
#include <string>

namespace emeg {

/// Receives each line that a computation has to say.
using LogLine = std::function<void(const std::string&)>;

/// Formats one line and hands it over.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void logLine(const LogLine& log, const char* format, ...);

} // namespace emeg
