#pragma once

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace emeg {

/// Plays the host while it lives: fills the table of host functions with functions that answer from queues
/// and record every call as one line of text. An empty queue answers like a user who cancels. One at a time.
class ScriptedHost {
public:
  ScriptedHost();
  ~ScriptedHost();
  ScriptedHost(const ScriptedHost&) = delete;
  ScriptedHost& operator=(const ScriptedHost&) = delete;

  // --- the script
  std::vector<int> hostVersion = {2, 1, 0};
  std::deque<int> integerAnswers;
  std::deque<float> floatAnswers;
  std::deque<int> yesNoAnswers;
  std::deque<std::string> textAnswers;
  std::deque<std::string> fileAnswers; ///< empty: cancelled
  std::map<int, int> dialogIntegers;   ///< by index; one that is missing reads -1
  std::map<int, float> dialogFloats;
  /// Called with every recorded line, before the call is answered.
  std::function<void(const std::string&)> onCall;

  // --- the record
  /// "version", "log TEXT", "box TEXT", "yesno TEXT", "integer TEXT [default, minimum, maximum]",
  /// "float TEXT [default, minimum, maximum]", "text TEXT [default]", "file TITLE|PATTERN|DESCRIPTION",
  /// "update", "parameter INDEX", "float parameter INDEX".
  std::vector<std::string> calls;

  /// The texts of the calls of one kind ("log", "box", ...).
  std::vector<std::string> texts(const std::string& kind) const;
  std::vector<std::string> logLines() const { return texts("log"); }
  std::vector<std::string> boxes() const { return texts("box"); }
  /// Everything that a user would have to answer: yesno, integer, float, text and file calls, whole lines.
  std::vector<std::string> questions() const;
  bool logged(const std::string& line) const;

  void record(const std::string& line);
};

} // namespace emeg
