#include "library/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace emeg {

namespace {

template <class Number>
std::string digitsOf(Number number) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

/// Bytes of the UTF-8 character at the text's start; 0 where there is none (RFC 3629).
size_t lengthOfCharacter(std::string_view text) {
  const auto byte = [&text](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xc2 && first < 0xe0   ? 2
                        : first >= 0xe0 && first < 0xf0 ? 3
                        : first >= 0xf0 && first < 0xf5 ? 4
                                                        : 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xc0U) != 0x80U) return 0;
  const unsigned second = byte(1);
  const bool isOverlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
  const bool isOutside = (first == 0xed && second >= 0xa0) || (first == 0xf4 && second >= 0x90);
  return isOverlong || isOutside ? 0 : length;
}

} // namespace

void JsonText::key(std::string_view name) {
  separate();
  quote(name);
  text_ += ':';
  needsComma_ = false;
}

void JsonText::value(double number) {
  if (!std::isfinite(number)) return null();
  separate();
  text_ += digitsOf(number);
}

void JsonText::value(int64_t number) {
  separate();
  text_ += digitsOf(number);
}

void JsonText::value(bool truth) {
  separate();
  text_ += truth ? "true" : "false";
}

void JsonText::value(std::string_view text) {
  separate();
  quote(text);
}

void JsonText::null() {
  separate();
  text_ += "null";
}

void JsonText::open(char bracket) {
  separate();
  text_ += bracket;
  needsComma_ = false;
}

void JsonText::close(char bracket) {
  text_ += bracket;
  needsComma_ = true;
}

void JsonText::separate() {
  if (needsComma_) text_ += ',';
  needsComma_ = true;
}

void JsonText::quote(std::string_view text) {
  constexpr std::string_view hexadecimal = "0123456789abcdef";
  text_ += '"';
  while (!text.empty()) {
    const size_t length = lengthOfCharacter(text);
    const auto first = static_cast<unsigned char>(text.front());
    if (length == 0)
      text_ += "\xef\xbf\xbd";
    else if (first < 0x20)
      text_ += std::string("\\u00") + hexadecimal[first >> 4U] + hexadecimal[first & 15U];
    else if (first == '"' || first == '\\')
      text_ += std::string("\\") + text.front();
    else
      text_ += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  text_ += '"';
}

} // namespace emeg
