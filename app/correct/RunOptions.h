#pragma once

#include "engine/settings/SettingList.h"

#include <span>

namespace emeg {

/// What `emeg correct` can be asked for beside the settings of the correction: files and messages.
std::span<const Setting> runOptions();

} // namespace emeg
