#pragma once

#include "artifacts/gradient/timing/volumes/Autocorrelation.h"
#include "artifacts/gradient/timing/volumes/Periodicity.h"

#include <optional>
#include <vector>

namespace emeg {

/// What follows a slice (samples) after one, two, three ... of them.
class SlicesInARow {
public:
  SlicesInARow(const Autocorrelation& correlation, double slice);

  /// Whether slices are about as alike after many as after one; movements and drift take some off. If not,
  /// they do not follow each other without a gap, or are no slices but a readout's tone, say.
  bool areNearlyAlike() const;

  /// Whether a period is two or more slices, as any number of them would be if they were alike.
  bool make(double period) const;

  /// Whether volumes of this period would stand out, if they were volumes: the lags hold enough of them.
  bool wouldShow(double period) const;

  /// The largest unit that the signal repeats: a volume, if not a pair of slices, say. Slices that are nearly
  /// alike leave it little to stand out by at one lag; but at all of its multiples it stands out of the
  /// slices around them. Nothing where all slices are alike.
  std::optional<Period> volume() const;

private:
  double reach_;
  std::vector<CorrelationPeak> peaks_{1}; // index k: after k slices
};

} // namespace emeg
