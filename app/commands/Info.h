#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg info FILE`: what a recording holds.
Command addInfoCommand(CLI::App& program);

} // namespace emeg
