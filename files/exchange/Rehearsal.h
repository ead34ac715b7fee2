#pragma once

#include <functional>

namespace emeg {

/// Does `work` in a copy of this process: false when that crashes or hangs for a minute. For libraries that
/// trust what stands in a file. An exception is no crash. Only for programs of one thread.
bool survives(const std::function<void()>& work);

} // namespace emeg
