#pragma once

#include "engine/CorrectionSettings.h"
#include "engine/RecordingShape.h"

#include <stdexcept>

namespace emeg {

/// Settings that contradict each other or the recording. The message is a sentence.
class UnusableSettings : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Throws UnusableSettings where no correction can do what is asked for: numbers that are none, edges without
/// anything between them, ways to another rate that the method does not know. Filters have the last word on
/// what a rate can hold.
void refuseUnusable(const CorrectionSettings& settings, const RecordingShape& shape);

} // namespace emeg
