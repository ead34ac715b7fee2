#include "artifacts/gradient/timing/pauses/QuietRuns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace emeg {

namespace {

constexpr int lastBin = 10000;

/// The 90th percentile of the absolute values, interpolated within its histogram bin; NaN when nothing was
/// counted.
double ninetiethPercentile(const double* envelope, int64_t nrOfSamples, double largest) {
  std::vector<int64_t> bins(lastBin + 1, 0);
  for (int64_t i = 0; i < nrOfSamples; ++i) {
    const int bin = static_cast<int>(std::floor(std::fabs(envelope[i]) * lastBin / largest));
    ++bins[static_cast<size_t>(std::clamp(bin, 0, lastBin))];
  }

  const double wanted = std::floor(0.9 * static_cast<double>(nrOfSamples));
  double counted = 0;
  int next = 0;
  while (counted < wanted && next <= lastBin)
    counted += static_cast<double>(bins[static_cast<size_t>(next++)]);
  if (next == 0) return std::numeric_limits<double>::quiet_NaN();

  const int lastAdded = next - 1;
  const double height = static_cast<double>(bins[static_cast<size_t>(lastAdded)]);
  return ((wanted - counted + height) / height + lastAdded - 1) / (lastBin / largest);
}

} // namespace

LengthBand LengthBand::around(int64_t length) {
  return {static_cast<int64_t>(std::floor(static_cast<double>(length) / 1.4)),
          static_cast<int64_t>(std::ceil(static_cast<double>(length) * 1.4))};
}

double envelopeThresholdOf(const double* envelope, int64_t nrOfSamples) {
  double largest = 0;
  for (int64_t i = 0; i < nrOfSamples; ++i) largest = std::max(largest, std::fabs(envelope[i]));
  // A subnormal maximum cannot be divided by; it is as good as flat.
  if (!(largest >= std::numeric_limits<double>::min())) return std::numeric_limits<double>::quiet_NaN();

  const double p90 = ninetiethPercentile(envelope, nrOfSamples, largest);
  double sum = 0;
  int64_t count = 0;
  for (int64_t i = 0; i < nrOfSamples; ++i) {
    if (envelope[i] > p90) {
      sum += envelope[i];
      ++count;
    }
  }
  if (count == 0) return std::numeric_limits<double>::quiet_NaN();
  return 0.5 * (sum / static_cast<double>(count));
}

std::vector<QuietRun> findQuietRuns(const double* envelope, int64_t nrOfSamples, double threshold,
                                    int64_t minimalLength) {
  std::vector<QuietRun> runs;
  const auto isQuiet = [&](int64_t i) { return -threshold <= envelope[i] && envelope[i] <= threshold; };
  int64_t i = 0;
  while (true) {
    while (i < nrOfSamples && !isQuiet(i)) ++i;
    if (i >= nrOfSamples) return runs;
    const int64_t start = i;
    while (i < nrOfSamples && isQuiet(i)) ++i;
    if (i - start > minimalLength) runs.push_back({start, i - start});
  }
}

std::vector<LengthClass> classifyLengths(const std::vector<QuietRun>& runs) {
  std::vector<LengthClass> classes;
  for (const QuietRun& run : runs) {
    const double length = static_cast<double>(run.length);
    size_t k = 0;
    while (k < classes.size()) {
      const double classLength = static_cast<double>(classes[k].length);
      if (length <= 1.4 * classLength && classLength <= 1.4 * length) break;
      ++k;
    }
    if (k == classes.size()) classes.push_back({run.length, 0});
    ++classes[k].count;
    while (k > 0 && classes[k - 1].count < classes[k].count) {
      std::swap(classes[k - 1], classes[k]);
      --k;
    }
  }
  return classes;
}

} // namespace emeg
