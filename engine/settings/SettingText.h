#pragma once

#include <string>

namespace emeg {

/// A number with up to six digits, for sentences about it, in every locale: "0.5", "1e+12".
std::string shortTextOf(double number);

} // namespace emeg
