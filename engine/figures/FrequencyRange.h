#pragma once

namespace emeg {

/// Frequencies that are compared, Hz.
struct FrequencyRange {
  double lowest = 1;
  double highest = 100;
};

} // namespace emeg
