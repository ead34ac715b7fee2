#pragma once

#include <cstddef>

namespace emeg {

/// Begins to measure: what is in use now counts as nothing.
void beginPeakOfMemory();
/// The most bytes that operator new had handed out at once since then.
std::size_t peakOfMemory();

} // namespace emeg
