#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// Which side of its cut-off an edge removes.
enum class EdgeKind : uint8_t { HighPass = 0, LowPass = 1 };

/// One edge of a zero-phase filter with Butterworth-squared gain.
struct FilterStage {
  EdgeKind kind = EdgeKind::LowPass;
  double cutOff = 0; ///< in units of the Nyquist frequency: Hz x 2 / sampling frequency
  double order = 0;  ///< steepness: the gain falls as (f / cutOff)^(2 order)
  uint32_t enabled = 1;
  int64_t tag = 0;
};

/// The edges of one filter, at most 32, sorted by ascending cut-off; equal cut-offs keep their order of
/// insertion.
class FilterStageList {
public:
  static constexpr int capacity = 32;

  /// Inserts an edge. A cut-off that is not positive adds nothing and counts as success. False when the list
  /// is full: nothing is added.
  bool addFilterStage(EdgeKind kind, double cutOff, double order, uint32_t enabled = 1, int64_t tag = 0);

  void clear() { stages_.clear(); }
  int count() const { return static_cast<int>(stages_.size()); }
  const FilterStage& operator[](int index) const;

private:
  std::vector<FilterStage> stages_;
};

} // namespace emeg
