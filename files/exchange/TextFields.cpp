#include "files/exchange/TextFields.h"

#include "files/exchange/TextFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace emeg {

namespace {

std::string_view withoutPlus(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  return text;
}

template <typename Number>
std::optional<Number> wholly(std::string_view text) {
  text = withoutPlus(text);
  Number number{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

} // namespace

std::optional<int64_t> wholeNumberIn(std::string_view text) {
  return wholly<int64_t>(text);
}

std::optional<double> numberIn(std::string_view text) {
  return wholly<double>(text);
}

bool equalsIgnoringCase(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  });
}

} // namespace emeg
