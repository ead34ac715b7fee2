#pragma once

#include "artifacts/cardiac/model/BeatTimeBase.h"
#include "artifacts/cardiac/model/PrincipalComponents.h"
#include "artifacts/cardiac/model/WarpTable.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emeg {

/// Values begin ... end - 1 of a row.
struct RowPart {
  size_t begin = 0;
  size_t end = 0;
};

/// The values of an interval that lie inside a series of `length` samples.
RowPart valuesInside(const BeatTimeBase& base, const WarpTable& table, size_t interval, int64_t length);

/// Interval `index` of the series at the values of `inside`; 0 at the others.
void resampleInside(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table,
                    size_t index, const RowPart& inside, std::vector<double>& values);

/// An epoch that the recording does not hold whole.
struct CutEpoch {
  size_t epoch = 0;
  RowPart inside;
  std::vector<double> values; ///< of the whole epoch, 0 outside
};

/// The values of an epoch that come from inside, given those of the intervals in front of and behind its
/// pulse. Empty when the pulse itself is outside.
RowPart epochInside(const BeatTimeBase& base, const RowPart& inFront, const RowPart& behind);

/// Fits the components to what there is of the epoch by least squares and makes that its scores. Components
/// that explain little of the other epochs are held back, because a part of an epoch does not tell them
/// apart.
void fitScores(const CutEpoch& cut, PrincipalComponents& model);

} // namespace emeg
