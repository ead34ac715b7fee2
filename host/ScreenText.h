#pragma once

#include <string>

namespace emeg {

/// A plug-in's text as a terminal shows it: the tag <br> becomes a line break, other HTML tags are left out,
/// and control characters other than line breaks and tabs become '?' (names in recordings must not steer the
/// terminal).
std::string screenText(const std::string& text);

/// The beginning of a text on one line, for messages that speak about it.
std::string excerpt(const std::string& text);

/// Shortest decimal text that reads back as the same number.
std::string numberText(int value);
std::string numberText(float value);

/// The questions as shown, ready for an answer behind them.
std::string yesNoQuestion(const std::string& question);
template <typename Number>
std::string numberQuestion(const std::string& prompt, Number defaultValue, Number minimum, Number maximum) {
  return screenText(prompt) + "\n[" + numberText(minimum) + " to " + numberText(maximum) + ", default " +
         numberText(defaultValue) + "] > ";
}
std::string textQuestion(const std::string& prompt, const std::string& defaultText);
std::string fileQuestion(const std::string& title, const std::string& description);

} // namespace emeg
