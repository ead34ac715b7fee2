#include "host/Terminal.h"

#include "host/ScreenText.h"

#include <cctype>
#include <charconv>
#include <filesystem>
#include <istream>
#include <ostream>
#include <system_error>
#include <type_traits>

namespace emeg {
namespace {

constexpr int mostRefusals = 100;
constexpr std::size_t longestLine = 65536;

std::string withoutOuterBlanks(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string lowerCase(std::string text) {
  for (char& character : text)
    character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  return text;
}

/// Reads all of a text as a number; nothing when it is none or too large for its type.
template <typename Number>
std::optional<Number> numberIn(const std::string& text) {
  const std::size_t start = text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0;
  Number value{};
  const auto [end, error] = std::from_chars(text.data() + start, text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

} // namespace

std::optional<std::string> Terminal::readLine() {
  std::string line;
  char character = 0;
  while (!ended_ && input_.get(character)) {
    if (character == '\n') {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return line;
    }
    line += character;
    if (line.size() > longestLine) {
      output_ << "\nThe line is too long; nothing more is read.\n" << std::flush;
      ended_ = true;
      return std::nullopt;
    }
  }
  ended_ = true;
  if (!line.empty()) return line;
  return std::nullopt;
}

template <typename Answer, typename Take>
std::optional<Answer> Terminal::ask(const std::string& shown, const std::optional<Answer>& defaultAnswer,
                                    Take take) {
  output_ << shown << std::flush;
  for (int refusals = 0; refusals < mostRefusals; ++refusals) {
    const std::optional<std::string> line = readLine();
    if (!line) {
      output_ << "\n(cancelled)\n" << std::flush;
      return std::nullopt;
    }
    if (line->empty()) return defaultAnswer;
    std::string reason;
    std::optional<Answer> answer = take(*line, reason);
    if (answer) return answer;
    output_ << reason << " > " << std::flush;
  }
  output_ << "\n(cancelled: too many answers that cannot be taken)\n" << std::flush;
  return std::nullopt;
}

std::optional<int> Terminal::yesNo(const std::string& question) {
  const auto take = [](const std::string& line, std::string& reason) -> std::optional<int> {
    const std::string word = lowerCase(withoutOuterBlanks(line));
    if (word == "y" || word == "yes") return 1;
    if (word == "n" || word == "no") return 0;
    reason = "Please type yes or no.";
    return std::nullopt;
  };
  return ask<int>(yesNoQuestion(question), 1, take);
}

template <typename Number>
std::optional<Number> Terminal::askNumber(const std::string& prompt, Number defaultValue, Number minimum,
                                          Number maximum) {
  const auto take = [&](const std::string& line, std::string& reason) -> std::optional<Number> {
    const std::optional<Number> number = numberIn<Number>(withoutOuterBlanks(line));
    const std::string bounds = "from " + numberText(minimum) + " to " + numberText(maximum);
    if (!number) {
      const std::string kind = std::is_integral_v<Number> ? "a whole number " : "a number ";
      reason = '"' + screenText(line.substr(0, 40)) + "\" is not a number that can be taken. Please type " +
               kind + bounds + ".";
      return std::nullopt;
    }
    if (*number >= minimum && *number <= maximum) return number;
    reason = numberText(*number) + " is out of bounds. Please type a number " + bounds + ".";
    return std::nullopt;
  };
  return ask<Number>(numberQuestion(prompt, defaultValue, minimum, maximum), defaultValue, take);
}

std::optional<int> Terminal::integer(const std::string& prompt, int defaultValue, int minimum, int maximum) {
  return askNumber(prompt, defaultValue, minimum, maximum);
}

std::optional<float> Terminal::real(const std::string& prompt, float defaultValue, float minimum,
                                    float maximum) {
  return askNumber(prompt, defaultValue, minimum, maximum);
}

std::optional<std::string> Terminal::text(const std::string& prompt, const std::string& defaultText) {
  const auto take = [](const std::string& line, std::string&) -> std::optional<std::string> { return line; };
  return ask<std::string>(textQuestion(prompt, defaultText), defaultText, take);
}

std::optional<std::string> Terminal::openFile(const std::string& title, const std::string&,
                                              const std::string& description) {
  const auto take = [](const std::string& line, std::string& reason) -> std::optional<std::string> {
    // What is too long for the dialogue is left to the caller, who refuses it, whether it exists or not.
    std::error_code error;
    if (line.size() > longestResultText || std::filesystem::exists(line, error)) return line;
    reason = '"' + screenText(line) + "\" does not exist. Please type the path of a file.";
    return std::nullopt;
  };
  return ask<std::string>(fileQuestion(title, description), std::nullopt, take);
}

} // namespace emeg
