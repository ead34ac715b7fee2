#pragma once

#include "engine/Method.h"

#include <cstdint>
#include <optional>
#include <string>

namespace emeg {

/// The whole number that divides the recorded rate into the other; 0 where there is none. Rates in Hz.
int64_t wholeDivisor(double recorded, double rate);

/// Why a recording cannot be given this rate, a sentence about the setting "rate"; nothing where it can.
/// `prefix` stands before the setting's name.
std::optional<std::string> problemOfRate(double recorded, double rate, const Method& method,
                                         const std::string& prefix = "");

} // namespace emeg
