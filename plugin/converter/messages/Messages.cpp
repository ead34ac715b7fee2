#include "plugin/converter/messages/Messages.h"

#include "plugin/bridge/HostFunctions.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace emeg {

ProgressLog::ProgressLog(const char* logPrefix) {
  std::snprintf(buffer_.data(), buffer_.size(), "%s", logPrefix);
  prefixLength_ = std::strlen(buffer_.data());
}

void ProgressLog::logProgress(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer_.data() + prefixLength_, buffer_.size() - prefixLength_, format, arguments);
  va_end(arguments);
  host::logText(buffer_.data());
}

bool abortRun(ProgressLog& log) {
  host::logText("");
  log.logProgress("Plugin execution was aborted.");
  return false;
}

bool showError(const std::string& text) {
  host::messageBox(text.c_str());
  return false;
}

bool reportFileError(const char* context) {
  const int errorNumber = errno;
  return showError(std::string(context) + "<br>" + errorTextOf(errorNumber) + ".");
}

} // namespace emeg
