#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace emeg {

/// A local maximum.
struct Peak {
  size_t at = 0; ///< sample
  double height = 0;
};

/// The local maxima above 0 that have no higher one within `distance` samples, in ascending order.
std::vector<Peak> spacedPeaks(std::span<const double> signal, size_t distance);

/// The usual height of the highest peaks over time: the median over the maxima of neighbouring pieces of the
/// signal, so that neither a spike nor a stretch without signal decides.
class UsualHeight {
public:
  /// `pieceLength` in samples: long enough to hold one of the peaks that matter.
  UsualHeight(std::span<const double> signal, size_t pieceLength);
  double at(size_t sample) const;

private:
  size_t pieceLength_;
  std::vector<double> heights_; ///< one per piece
};

} // namespace emeg
