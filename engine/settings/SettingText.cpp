#include "engine/settings/SettingText.h"

#include <array>
#include <charconv>

namespace emeg {

std::string shortTextOf(double number) {
  constexpr int digits = 6;
  std::array<char, 32> text{};
  return {
      text.data(),
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, digits).ptr};
}

} // namespace emeg
