#pragma once

#include <string>

namespace emeg {

/// printf into a string of any length.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
formatText(const char* format, ...);

} // namespace emeg
