#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Rows of doubles of equal length, each at the start of a cache line. All values are 0 at first.
class RowMatrix {
public:
  RowMatrix(size_t nrOfRows, size_t length)
      : nrOfRows_(nrOfRows), length_(length), linesPerRow_((length + valuesPerLine - 1) / valuesPerLine),
        lines_(nrOfRows * linesPerRow_) {}

  size_t nrOfRows() const { return nrOfRows_; }
  size_t length() const { return length_; }
  /// Values from the start of one row to the start of the next.
  size_t stride() const { return linesPerRow_ * valuesPerLine; }
  double* row(size_t index) { return &lines_.data()->values[0] + index * stride(); }
  const double* row(size_t index) const { return &lines_.data()->values[0] + index * stride(); }

private:
  static constexpr size_t valuesPerLine = 8;
  struct alignas(64) CacheLine {
    double values[valuesPerLine] = {};
  };

  size_t nrOfRows_;
  size_t length_;
  size_t linesPerRow_;
  std::vector<CacheLine> lines_;
};

} // namespace emeg
