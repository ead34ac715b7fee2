#pragma once

#include <cstdint>
#include <vector>

namespace emeg {

/// How the heart pulses that were found agree with the beats that are true. A pulse belongs to a beat when it
/// lies within the tolerance of the beat's time plus one constant delay.
struct BeatAgreement {
  double delay = 0; ///< seconds from a true beat to the pulse found for it, median of the matched ones
  int64_t nrOfTrueBeats = 0; ///< inside the span from the first to the last found pulse
  int64_t nrOfFound = 0;
  int64_t nrOfMatched = 0; ///< pairs of a beat and a pulse; nothing belongs to two pairs
  double largestError = 0; ///< of the matched ones, seconds after the delay
  double rmsError = 0;

  /// Part of the true beats in the span that were found; 0 when there are none.
  double sensitivity() const;
  /// Part of the found pulses that are beats; 0 when nothing was found.
  double positivePredictivity() const;
};

/// Times in seconds, ascending. The delay is looked for between -1 and 1 s: that one which leaves the
/// smallest sum of absolute errors, an unmatched pulse counting as much as one at the edge of the tolerance.
/// Beats lie in the span when the pulse they should have does, the tolerance added at both ends.
BeatAgreement compareBeats(const std::vector<double>& trueBeats, const std::vector<double>& found,
                           double tolerance);

} // namespace emeg
