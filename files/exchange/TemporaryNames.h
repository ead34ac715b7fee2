#pragma once

#include <string>

namespace emeg {

/// Notes a temporary file that must not outlive the program; a name beyond what can be noted is ignored.
void noteTemporary(const std::string& path);

/// The file was renamed or removed.
void forgetTemporary(const std::string& path);

/// From now on Ctrl-C and the other polite ways to end the program remove the noted files first. A program
/// calls it at its start.
void removeTemporariesWhenInterrupted();

} // namespace emeg
