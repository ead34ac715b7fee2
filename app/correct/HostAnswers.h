#pragma once

#include "app/correct/CorrectParameters.h"

#include <functional>
#include <string>
#include <vector>

namespace emeg {

/// The user of one converter run: answers its dialogues from the parameters, and passes on what it says.
/// While it lives, the process's host function table leads here; one at a time.
class HostAnswers {
public:
  struct Dialogue {
    std::string ctcPath;
    bool correctBcg = false;
    bool volumeWise = true;
    int window = 150;
    int decimationFactor = 1;
    double highPass = 0;
    double lowPass = 0;
    std::vector<Notch> notches;
    bool averageReference = false;
    int scalingOrder = 0;
  };

  /// `log` gets every progress line without its prefix; it may throw, which ends the run.
  HostAnswers(Dialogue dialogue, std::function<void(const std::string&)> log);
  ~HostAnswers();
  HostAnswers(const HostAnswers&) = delete;
  HostAnswers& operator=(const HostAnswers&) = delete;

  /// What the converter showed in message boxes, and questions that have no answer here.
  const std::vector<std::string>& errors() const { return errors_; }

private:
  friend struct HostFunctions;
  void logText(const char* text);
  void messageBox(const char* text);
  int yesNo(const std::string& question);
  int integerInput(const std::string& prompt);
  float floatInput(const std::string& prompt);
  int chooseFile(const std::string& pattern, char* path) const;
  void noteUnanswered(const std::string& prompt);

  Dialogue dialogue_;
  std::function<void(const std::string&)> log_;
  std::vector<std::string> errors_;
  size_t nextNotch_ = 0;
};

} // namespace emeg
