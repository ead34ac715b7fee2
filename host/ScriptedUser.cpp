#include "host/ScriptedUser.h"

#include "host/Answers.h"
#include "host/ScreenText.h"

#include <ostream>

namespace emeg {
namespace {

std::optional<int> yesNoIn(const nlohmann::json& value) {
  if (value.is_boolean()) return value.get<bool>() ? 1 : 0;
  if (value == "yes") return 1;
  if (value == "no") return 0;
  return integerIn(value);
}

std::optional<std::string> textIn(const nlohmann::json& value) {
  return value.is_string() ? std::optional<std::string>(value.get<std::string>()) : std::nullopt;
}

/// An answer as it is shown; nothing for a cancelled question.
template <typename Number>
std::optional<std::string> shownNumber(const std::optional<Number>& answer) {
  return answer ? std::optional<std::string>(numberText(*answer)) : std::nullopt;
}

} // namespace

void ScriptedUser::note(const std::string& sentence) {
  notes_ << "lumetra: " << sentence << '\n' << std::flush;
}

void ScriptedUser::show(const std::string& question, const std::optional<std::string>& answer) {
  if (screen_ == nullptr) return;
  *screen_ << question << (answer ? screenText(*answer) : std::string("(cancelled)")) << '\n' << std::flush;
}

template <typename Answer, typename Convert>
std::optional<Answer> ScriptedUser::take(const std::string& prompt, const Answer& defaultAnswer,
                                         const char* kind, Convert convert) {
  const nlohmann::json* given = answers_.next(prompt);
  if (given == nullptr) {
    note("no answer is given for the question " + excerpt(prompt) + "; it counts as cancelled");
    return std::nullopt;
  }
  if (given->is_null()) return std::nullopt;
  if (*given == "default") return defaultAnswer;
  std::optional<Answer> answer = convert(*given);
  if (!answer)
    note("the answer to " + excerpt(prompt) + " should be " + kind + "; the question counts as cancelled");
  return answer;
}

template <typename Number>
std::optional<Number> ScriptedUser::takeNumber(const std::string& prompt, Number defaultValue, Number minimum,
                                               Number maximum, const char* kind,
                                               std::optional<Number> (*numberIn)(const nlohmann::json&)) {
  const std::optional<Number> answer = take<Number>(prompt, defaultValue, kind, numberIn);
  if (answer && !(*answer >= minimum && *answer <= maximum))
    note("the answer " + numberText(*answer) + " to " + excerpt(prompt) + " is out of bounds (" +
         numberText(minimum) + " to " + numberText(maximum) + "); it is handed over as it is");
  show(numberQuestion(prompt, defaultValue, minimum, maximum), shownNumber(answer));
  return answer;
}

std::optional<int> ScriptedUser::yesNo(const std::string& question) {
  const std::optional<int> answer = take<int>(question, 1, "yes, no, true, false or a whole number", yesNoIn);
  show(yesNoQuestion(question), shownNumber(answer));
  return answer;
}

std::optional<int> ScriptedUser::integer(const std::string& prompt, int defaultValue, int minimum,
                                         int maximum) {
  return takeNumber<int>(prompt, defaultValue, minimum, maximum, "a whole number of 32 bits", integerIn);
}

std::optional<float> ScriptedUser::real(const std::string& prompt, float defaultValue, float minimum,
                                        float maximum) {
  return takeNumber<float>(prompt, defaultValue, minimum, maximum, "a number of single precision", floatIn);
}

std::optional<std::string> ScriptedUser::text(const std::string& prompt, const std::string& defaultText) {
  std::optional<std::string> answer = take<std::string>(prompt, defaultText, "a text", textIn);
  show(textQuestion(prompt, defaultText), answer);
  return answer;
}

std::optional<std::string> ScriptedUser::openFile(const std::string& title, const std::string& pattern,
                                                  const std::string& description) {
  std::optional<std::string> answer = answers_.file(pattern);
  show(fileQuestion(title, description), answer);
  return answer;
}

} // namespace emeg
