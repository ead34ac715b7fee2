#include "host/ScreenText.h"

#include <array>
#include <cctype>
#include <charconv>
#include <cstddef>

namespace emeg {
namespace {

bool isLetter(char character) {
  return std::isalpha(static_cast<unsigned char>(character)) != 0;
}

/// Length of the HTML tag that begins at `start`, 0 when what stands there is no tag ("a < b").
std::size_t tagLength(const std::string& text, std::size_t start) {
  if (text[start] != '<') return 0;
  std::size_t name = start + 1;
  if (name < text.size() && text[name] == '/') ++name;
  if (name >= text.size() || !isLetter(text[name])) return 0;
  const std::size_t end = text.find_first_of("<>", name);
  return end != std::string::npos && text[end] == '>' ? end + 1 - start : 0;
}

/// The tag's letters in lower case: "br" for <br>, <BR/> and <br />.
std::string tagName(const std::string& text, std::size_t start) {
  std::string name;
  for (std::size_t i = start + 1; isLetter(text[i]); ++i)
    name += static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
  return name;
}

bool isUnwelcomeControl(char character) {
  const auto code = static_cast<unsigned char>(character);
  return (code < 0x20 && character != '\n' && character != '\t') || code == 0x7f;
}

template <typename Number>
std::string shortest(Number value) {
  std::array<char, 64> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() ? std::string(digits.data(), end) : std::string("?");
}

} // namespace

std::string screenText(const std::string& text) {
  std::string shown;
  shown.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = tagLength(text, i);
    if (length > 0) {
      if (tagName(text, i) == "br") shown += '\n';
      i += length;
      continue;
    }
    shown += isUnwelcomeControl(text[i]) ? '?' : text[i];
    ++i;
  }
  return shown;
}

std::string excerpt(const std::string& text) {
  constexpr std::size_t longest = 60;
  std::string line = screenText(text);
  const std::size_t lineEnd = line.find('\n');
  const bool shortened = lineEnd != std::string::npos || line.size() > longest;
  line = line.substr(0, lineEnd).substr(0, longest);
  return '"' + line + (shortened ? "...\"" : "\"");
}

std::string numberText(int value) {
  return shortest(value);
}
std::string numberText(float value) {
  return shortest(value);
}

std::string yesNoQuestion(const std::string& question) {
  return screenText(question) + "\n[yes or no, default yes] > ";
}

std::string textQuestion(const std::string& prompt, const std::string& defaultText) {
  return screenText(prompt) + "\n[default \"" + screenText(defaultText) + "\"] > ";
}

std::string fileQuestion(const std::string& title, const std::string& description) {
  return screenText(title) + "\n[" + screenText(description) + ", empty line: none] > ";
}

} // namespace emeg
