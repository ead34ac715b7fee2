#pragma once

#include <functional>
#include <string>

namespace emeg {

/// The SHA-256 of a file in hexadecimal digits; empty when it cannot be read. `watch` is called now and then
/// and may throw.
std::string sha256Of(const std::string& path, const std::function<void()>& watch);

} // namespace emeg
