#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg convert IN OUT`: a recording in another format.
Command addConvertCommand(CLI::App& program);

} // namespace emeg
