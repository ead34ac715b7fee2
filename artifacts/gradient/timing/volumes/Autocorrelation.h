#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace emeg {

struct CorrelationPeak {
  double lag = 0;   ///< samples, a real number
  double value = 0; ///< 1: the signal repeats itself exactly
};

/// How much a signal resembles itself some samples later: the sum of products over the overlap, divided by
/// the root of both parts' energies there, so that it does not fall with the lag.
class Autocorrelation {
public:
  /// Lags up to `largestLag` samples, or less where the signal does not hold them and what it takes to
  /// interpolate there. The transform takes twice the memory of the signal, up to the next power of two.
  Autocorrelation(std::span<const double> signal, int64_t largestLag);

  int64_t largestLag() const { return largestLag_; }
  double at(int64_t lag) const { return values_[static_cast<size_t>(lag)]; }
  /// Between samples; 0 where there is no such lag.
  double between(double lag) const;

  /// The highest point, between samples, within `reach` samples of `lag`. 0 where there is no such lag.
  CorrelationPeak peakNear(double lag, double reach) const;

  /// All local maxima from `smallestLag` on that are larger than `floor`, in ascending order of lag.
  std::vector<CorrelationPeak> peaks(int64_t smallestLag, double floor) const;

private:
  CorrelationPeak refined(int64_t lag) const;

  int64_t largestLag_;
  std::vector<double> values_; // some more, so that no interpolation meets the step behind the last one
};

} // namespace emeg
