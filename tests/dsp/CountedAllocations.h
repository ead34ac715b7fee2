#pragma once

#include <cstddef>

namespace emeg {

/// Every operator new of the program so far.
struct Allocations {
  std::size_t count = 0;
  std::size_t bytes = 0;
};

Allocations& allocations();

} // namespace emeg
