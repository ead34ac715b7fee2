#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// A stretch without gradient activity, in samples. The first sample behind it is a burst's onset.
struct QuietRun {
  int64_t start = 0;
  int64_t length = 0;
  int64_t end() const { return start + length; }
};

/// Runs of similar length; `length` is that of the run that founded the class.
struct LengthClass {
  int64_t length = 0;
  int64_t count = 0;
};

/// Accepted lengths, both bounds included. The default accepts nothing.
struct LengthBand {
  int64_t lower = 1;
  int64_t upper = 0;
  bool contains(int64_t length) const { return lower <= length && length <= upper; }
  /// Lengths within a factor of 1.4 of the given one, bounds widened to whole samples.
  static LengthBand around(int64_t length);
};

/// The level that separates gradient activity from quiet: half the mean of all envelope values above the 90th
/// percentile of the absolute values (read from a histogram of 10001 bins). NaN when there is no such value,
/// as in a flat signal.
double envelopeThresholdOf(const double* envelope, int64_t nrOfSamples);

/// Stretches of more than `minimalLength` samples in which the envelope stays within +-threshold.
std::vector<QuietRun> findQuietRuns(const double* envelope, int64_t nrOfSamples, double threshold,
                                    int64_t minimalLength);

/// Groups run lengths into classes (within a factor of 1.4 of the founding length), most frequent first;
/// among equally frequent ones the older comes first.
std::vector<LengthClass> classifyLengths(const std::vector<QuietRun>& runs);

} // namespace emeg
