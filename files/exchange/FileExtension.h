#pragma once

#include <string>

namespace emeg {

/// The last extension of a path in lower case with its dot (".vhdr"); empty when there is none.
std::string extensionOf(const std::string& path);

/// The path without its last extension.
std::string withoutExtension(const std::string& path);

/// The part behind the last separator.
std::string fileNameOf(const std::string& path);

/// `name` in the folder of `path`.
std::string besideFile(const std::string& path, const std::string& name);

/// A sentence that says why a recording with this extension cannot be read, and what to give instead.
std::string refusalOfExtension(const std::string& path);

/// The same for writing.
std::string refusalOfOutputExtension(const std::string& path);

} // namespace emeg
