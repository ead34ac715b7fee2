#pragma once

#include "app/commands/SimulateOptions.h"
#include "app/simulation/SimulationParameters.h"

#include <string>

namespace CLI {
class App;
}

namespace emeg {

/// The preset with what the command line says put in its place.
SimulationParameters parametersOf(const SimulateOptions& options);

/// A sentence that says what is wrong with the command line or with the parameters that follow from it; empty
/// when nothing is. `app` must have parsed the options.
std::string problemWithOptions(const CLI::App& app, const SimulateOptions& options,
                               const SimulationParameters& parameters);

} // namespace emeg
