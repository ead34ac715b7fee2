#pragma once

#include "engine/CorrectionSettings.h"
#include "engine/RecordingShape.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace emeg {

/// Settings that contradict each other or the recording. The message is a sentence.
class UnusableSettings : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The first thing in which settings contradict each other or the recording, a sentence that names them as
/// SettingList does, `prefix` before each name ("--" on a command line). Nothing when there is none.
std::optional<std::string> firstProblemOf(const CorrectionSettings& settings, const RecordingShape& shape,
                                          const std::string& prefix = "");

/// Throws UnusableSettings with the first problem.
void checkSettings(const CorrectionSettings& settings, const RecordingShape& shape);

} // namespace emeg
