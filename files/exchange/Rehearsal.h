#pragma once

#include <functional>
#include <string>

namespace emeg {

struct RehearsalResult {
  bool survived = true; ///< false: the work crashed or took more than a minute
  std::string error;    ///< message of the exception that it ended with; empty: none
};

/// Does `work` in a copy of this process. For libraries that trust what stands in a file: whatever a damaged
/// one does to them, this process does not see it. Only for programs of one thread.
RehearsalResult rehearse(const std::function<void()>& work);

} // namespace emeg
