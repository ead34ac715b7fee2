#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg man [COMMAND]`: manual pages (for man(1)), made from the commands' declarations.
Command addManualCommand(CLI::App& program);

} // namespace emeg
