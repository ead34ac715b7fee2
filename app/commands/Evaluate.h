#pragma once

#include "app/commands/Command.h"

namespace emeg {

/// `emeg evaluate CORRECTED.ctc --truth TRUTH.json`: what a correction left of a simulated artifact.
Command addEvaluateCommand(CLI::App& program);

} // namespace emeg
