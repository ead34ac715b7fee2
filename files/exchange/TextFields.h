#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace emeg {

/// A whole text as a number; nothing when there is anything else in it.
std::optional<int64_t> wholeNumberIn(std::string_view text);
std::optional<double> numberIn(std::string_view text);

bool equalsIgnoringCase(std::string_view one, std::string_view other);

} // namespace emeg
