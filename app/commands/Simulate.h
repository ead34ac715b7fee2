#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg simulate PRESET OUT.ctc`: a recording with known artifacts.
Command addSimulateCommand(CLI::App& program);

} // namespace emeg
