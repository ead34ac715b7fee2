#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg completion SHELL`: a script that completes commands and options in bash, zsh or fish, made from the
/// commands' declarations.
Command addCompletionCommand(CLI::App& program);

} // namespace emeg
