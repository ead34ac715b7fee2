#include "artifacts/cardiac/model/BeatReassembly.h"

#include "artifacts/cardiac/model/WarpPart.h"

#include <algorithm>

namespace emeg {

void cutIntoEpochs(const BeatTimeBase& base, size_t index, const std::vector<double>& beat,
                   RowMatrix& epochs) {
  const auto half = static_cast<std::ptrdiff_t>(base.epochHalfLength);
  // The beat's last value is the next beat's first.
  if (index < base.nrOfEpochs()) std::copy(beat.end() - 1 - half, beat.end() - 1, epochs.row(index));
  if (index > 0) std::copy(beat.begin(), beat.begin() + half + 1, epochs.row(index - 1) + half);
}

void reassembleBeat(const BeatTimeBase& base, const double* epochBefore, const double* epochAfter,
                    std::vector<double>& beat) {
  const int32_t half = base.epochHalfLength;
  const int32_t fadeStart = base.modelLength - half - 1;
  for (int32_t j = 0; j < base.modelLength; ++j) {
    double& value = beat[static_cast<size_t>(j)];
    const double before = epochBefore && j < half ? epochBefore[half + j] : value;
    const double after = epochAfter && j > fadeStart ? epochAfter[j - fadeStart] : value;
    if (j <= fadeStart) {
      value = before;
    } else if (j >= half) {
      value = after;
    } else {
      const double t = static_cast<double>(j - fadeStart) / (half - fadeStart);
      value = t * after + (1 - t) * before;
    }
  }
}

void writeBeatBack(const BeatTimeBase& base, size_t index, double a, const std::vector<double>& beat,
                   double* series, int64_t length) {
  const double interval = base.length(index);
  const auto start = static_cast<int64_t>(base.start(index));
  const auto nrOfSamples = static_cast<int64_t>(interval);
  const double last = base.modelLength - 1;
  const auto write = [&](int64_t j, double place) {
    if (start + j >= 0 && start + j < length) series[start + j] = beatAt(beat, place);
  };

  const WarpPart front(a, base, interval);
  const WarpPart back(1 - a, base, interval);
  const int64_t end = lastSampleBeforeBend(base, a, interval);
  double x = 0.0;
  for (int64_t j = 0; j <= end; ++j) {
    x = front.solve(static_cast<double>(j), x);
    write(j, last * front.onTimeBase(x));
  }
  x = 0.0;
  for (int64_t j = nrOfSamples - 1; j > end; --j) {
    x = back.solve(static_cast<double>(nrOfSamples - j), x);
    write(j, last * (1 - back.onTimeBase(x)));
  }
}

} // namespace emeg
