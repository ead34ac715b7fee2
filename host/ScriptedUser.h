#pragma once

#include "host/User.h"

#include <nlohmann/json_fwd.hpp>

#include <iosfwd>

namespace emeg {

class Answers;

/// A user who answers from a list. Numbers are handed over as they stand there, even out of bounds, so that a
/// careless host can be played. A question without an answer, or with one of another kind, is cancelled.
/// `notes` gets a line about everything unusual; `screen`, when given, shows questions with their answers.
class ScriptedUser : public User {
public:
  ScriptedUser(Answers& answers, std::ostream& notes, std::ostream* screen)
      : answers_(answers), notes_(notes), screen_(screen) {}

  std::optional<int> yesNo(const std::string& question) override;
  std::optional<int> integer(const std::string& prompt, int defaultValue, int minimum, int maximum) override;
  std::optional<float> real(const std::string& prompt, float defaultValue, float minimum,
                            float maximum) override;
  std::optional<std::string> text(const std::string& prompt, const std::string& defaultText) override;
  std::optional<std::string> openFile(const std::string& title, const std::string& pattern,
                                      const std::string& description) override;

private:
  /// The next answer as `convert` reads it (JSON in, nothing when it is of another kind), the default for
  /// "default".
  template <typename Answer, typename Convert>
  std::optional<Answer> take(const std::string& prompt, const Answer& defaultAnswer, const char* kind,
                             Convert convert);
  template <typename Number>
  std::optional<Number> takeNumber(const std::string& prompt, Number defaultValue, Number minimum,
                                   Number maximum, const char* kind,
                                   std::optional<Number> (*numberIn)(const nlohmann::json&));
  void note(const std::string& sentence);
  void show(const std::string& question, const std::optional<std::string>& answer);

  Answers& answers_;
  std::ostream& notes_;
  std::ostream* screen_;
};

} // namespace emeg
