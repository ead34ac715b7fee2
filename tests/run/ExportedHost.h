#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace emeg::test {

/// Makes this test program a host: it exports the eleven functions that a plug-in looks up, and while an
/// object of this class lives they are answered from it. Without one every question is cancelled.
class ExportedHost {
public:
  ExportedHost();
  ~ExportedHost();
  ExportedHost(const ExportedHost&) = delete;
  ExportedHost& operator=(const ExportedHost&) = delete;

  std::map<std::string, std::string> files; ///< chosen path by the dialogue's pattern
  int correctionChoice = 1;
  int volumeWise = 1;
  int window = 150;

  /// Called at every log line, before the plug-in goes on.
  std::function<void(const std::string&)> onLog;

  std::vector<std::string> calls; ///< every call as "lmLogText: the text"
  std::vector<std::string> messageBoxes;

  void record(const std::string& function, const char* text);
};

} // namespace emeg::test
