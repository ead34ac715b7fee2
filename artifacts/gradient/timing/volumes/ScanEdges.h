#pragma once

#include "artifacts/gradient/timing/volumes/Periodicity.h"
#include "artifacts/gradient/timing/volumes/Repeats.h"

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

/// The scan's first and last activity: blocks of the first and last repeats, and of those next to them, that
/// still hold what the average (one period of the fit) holds there.
class ScanEdges {
public:
  ScanEdges(std::span<const double> signal, const FittedRepeats& fit, std::vector<double> average,
            double samplingFrequency, PositionRange limits);

  /// The sample at which activity begins.
  double begin() const;
  /// Behind the last block of activity.
  double end() const;

private:
  double start(int64_t repeat, int64_t block) const;
  bool isBusy(int64_t block) const;
  bool holds(int64_t repeat, int64_t block) const;
  double outermost(int64_t repeat, int64_t step) const;
  double refinedBegin(double blockBegin) const;

  std::span<const double> signal_;
  const FittedRepeats& fit_;
  std::vector<double> average_;
  PositionRange limits_;
  int64_t block_;
  int64_t nrOfBlocks_;
  double floor_ = 0;
};

} // namespace emeg
