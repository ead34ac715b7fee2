#include "artifacts/cardiac/WarpFit.h"

#include "artifacts/cardiac/BcgSeries.h"
#include "artifacts/cardiac/ResamplingKernels.h"

#include <algorithm>
#include <array>

namespace emeg {

namespace {

constexpr double finestStep = 0.001;
constexpr double notComputed = -1.0;

/// Intervals first ... first + 7 of the recording; behind its last one, that one again.
LockstepIntervals intervalsFrom(const BeatTimeBase& base, size_t first) {
  LockstepIntervals intervals;
  for (size_t i = 0; i < nrOfLockstepIntervals; ++i) {
    const size_t index = std::min(first + i, base.nrOfIntervals() - 1);
    intervals.starts[i] = base.start(index);
    intervals.lengths[i] = base.length(index);
  }
  return intervals;
}

} // namespace

double warpScore(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table) {
  const auto size = static_cast<size_t>(base.modelLength);
  const ResamplingKernels& kernels = resamplingKernels();
  std::vector<double> values(size * nrOfLockstepIntervals);
  std::array<double, nrOfLockstepIntervals> factors;
  std::vector<double> sum(size);
  for (size_t first = 0; first < base.nrOfIntervals(); first += nrOfLockstepIntervals) {
    kernels.resample(series, length - 1, intervalsFrom(base, first), table.warpPosition.data(),
                     table.warpOffset.data(), base.modelLength, values.data(), factors.data());
    std::transform(factors.begin(), factors.end(), factors.begin(), normFactor);
    const size_t count = std::min<size_t>(base.nrOfIntervals() - first, nrOfLockstepIntervals);
    kernels.addScaledIntervals(values.data(), factors.data(), static_cast<int>(count), base.modelLength,
                               sum.data());
  }
  double score = 0;
  for (const double value : sum) score += value * value;
  return score;
}

void resampleInterval(const double* series, int64_t length, const BeatTimeBase& base, const WarpTable& table,
                      size_t index, double* values) {
  const double start = base.start(index);
  const double samples = base.length(index);
  const auto last = static_cast<double>(length - 1);
  double sample = std::clamp(start, 0.0, last);
  for (size_t j = 0; j < table.warpPosition.size(); ++j) {
    const double place = samples * table.warpPosition[j] + start + table.warpOffset[j];
    while (place >= sample + 1 && sample < last) ++sample;
    const double fraction = place - sample;
    const auto at = static_cast<size_t>(sample);
    values[j] = (1.0 - fraction) * series[at] + fraction * series[at + 1];
  }
}

WarpFit::WarpFit(const BeatTimeBase& base) : base_(base) {}

const WarpTable& WarpFit::tableOf(double a, bool sharedByChannels) {
  if (!sharedByChannels) return table_ = makeWarpTable(a, base_);
  for (const auto& [parameter, table] : sharedTables_)
    if (parameter == a) return table;
  return sharedTables_.emplace_back(a, makeWarpTable(a, base_)).second;
}

double WarpFit::fit(const double* series, int64_t length) {
  double low = base_.warpMargin;
  double high = 1 - base_.warpMargin;
  double step = (high - low) / 4;
  double a = 0.5;
  std::array<double, 5> scores;
  scores.fill(notComputed);
  for (bool firstBracket = true; step > finestStep; firstBracket = false) {
    for (size_t k = 0; k < scores.size(); ++k)
      if (scores[k] == notComputed)
        scores[k] =
            warpScore(series, length, base_, tableOf(low + static_cast<double>(k) * step, firstBracket));
    const auto highest = std::max_element(scores.begin(), scores.end()) - scores.begin();
    const auto k = static_cast<size_t>(std::clamp<std::ptrdiff_t>(highest, 1, 3));
    high = low + static_cast<double>(k + 1) * step;
    low += static_cast<double>(k - 1) * step;
    step /= 2;
    scores = {scores[k - 1], notComputed, scores[k], notComputed, scores[k + 1]};
    a = (low + high) / 2;
  }
  return a;
}

} // namespace emeg
