#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/WarpTable.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace emeg {

/// Finds for each channel the warp parameter under which its resampled intervals look most alike: the energy
/// of the sum of the intervals, each normalised to unit energy, is largest. A search over brackets of five
/// points, halved until they lie within 0.001 of each other. Where two scores of a bracket agree to rounding,
/// plain sums decide. Immutable once made: threads may share it.
class WarpFit {
public:
  /// `base` has to stay where it is.
  explicit WarpFit(const BeatTimeBase& base);

  /// `series` holds `length` samples and one readable value behind them.
  double fit(const double* series, int64_t length) const;

private:
  struct Point {
    double a = 0;
    double score = 0;
    bool isScored = false;
  };
  using Bracket = std::array<Point, 5>;

  size_t highestOf(Bracket& bracket, const double* series, int64_t length) const;
  double scoreOf(double a, const double* series, int64_t length) const;

  const BeatTimeBase& base_;
  std::vector<std::pair<double, WarpTable>>
      sharedTables_; ///< of the first bracket, the same in every channel
};

/// Energy of the sum of the normalised intervals, resampled by one table.
double warpScore(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table);

/// The same with every sum in plain order: slow.
double plainWarpScore(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table);

/// Interval `index` of the series on the common time base: modelLength values.
void resampleInterval(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table,
                      size_t index, double* values);

} // namespace emeg
