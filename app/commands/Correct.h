#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg correct IN`: removes MR gradient and heart beat artifacts from a recording of any format.
Command addCorrectCommand(CLI::App& program);

} // namespace emeg
