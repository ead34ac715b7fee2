#pragma once

#include "engine/CorrectionSettings.h"

#include <string>
#include <string_view>

namespace emeg {

/// Sets what the option of this name sets, from the text that would stand behind it; "1" or "0" for a flag.
/// Throws Refusal where there is no such setting (those that choose channels, stretches or files are the
/// program's own), or the value is none of it.
void setByName(CorrectionSettings& settings, std::string_view name, std::string_view value);

/// A number as such a text, exactly and in every locale.
std::string textOf(double number);

} // namespace emeg
