#pragma once

#include <string>

namespace emeg {

/// What a path names; a link counts as what it leads to. Missing also stands for what cannot be looked at:
/// opening it tells the reason.
enum class PathKind { Missing, RegularFile, Folder, Pipe, Device };

PathKind pathKind(const std::string& path);

/// Renames a closed file; one that has the new name already is replaced in one step. False with the C
/// library's error number set.
bool replaceFile(const std::string& from, const std::string& to);

} // namespace emeg
