#pragma once

#include <stdexcept>

namespace emeg {

/// The arguments or the input cannot be used: exit status 2. The message is a sentence with the remedy.
class UnusableInput : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The run cannot be finished: exit status 1. The message is a sentence with the remedy.
class FailedRun : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace emeg
