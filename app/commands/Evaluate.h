#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg evaluate CORRECTED.ctc --truth TRUTH.json`: what a correction found and left of simulated artifacts.
Command addEvaluateCommand(CLI::App& program);

} // namespace emeg
