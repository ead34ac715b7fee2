#pragma once

#include "app/correct/CorrectParameters.h"

namespace CLI {
class App;
}

namespace emeg {

/// Declares every option of `emeg correct` to the parser, as engine/settings/SettingList and
/// app/correct/RunOptions describe them; the parser fills `parameters`, which must live as long.
void declareCorrectOptions(CLI::App& app, CorrectParameters& parameters);

} // namespace emeg
