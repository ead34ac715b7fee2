#include "artifacts/gradient/timing/VolumesOfSlices.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace emeg {

namespace {

constexpr double sliceReach = 0.02;  // of a slice: dead time at a volume's end
constexpr double leastReach = 1;     // samples
constexpr double fewestOthers = 6;   // lags that tell how much they differ by chance
constexpr double leastCombScore = 6; // standard errors; hundreds of combs are tried
constexpr int mostLevels = 4;

double reachOf(double slice) {
  return std::max(leastReach, sliceReach * slice);
}

/// By how much values stand out of their neighbours; the first two and the last do not count.
std::vector<double> contrastsOf(const std::vector<CorrelationPeak>& peaks) {
  std::vector<double> contrasts;
  for (size_t k = 2; k + 1 < peaks.size(); ++k)
    contrasts.push_back(peaks[k].value - (peaks[k - 1].value + peaks[k + 1].value) / 2);
  return contrasts;
}

/// Student's t of every n-th value (from index n on; the first given is that of index 2) against the others.
double combScore(const std::vector<double>& contrasts, size_t n) {
  struct {
    double count = 0, sum = 0, squares = 0;
  } teeth, others;
  for (size_t i = 0; i < contrasts.size(); ++i) {
    auto& group = (i + 2) % n == 0 ? teeth : others;
    group.count += 1;
    group.sum += contrasts[i];
    group.squares += contrasts[i] * contrasts[i];
  }
  if (teeth.count < 1 || others.count < fewestOthers) return 0;
  const double difference = teeth.sum / teeth.count - others.sum / others.count;
  const double within = teeth.squares - teeth.sum * teeth.sum / teeth.count + others.squares -
                        others.sum * others.sum / others.count;
  const double variance = within / (teeth.count + others.count - 2);
  return variance > 0 ? difference / std::sqrt(variance * (1 / teeth.count + 1 / others.count)) : 0;
}

} // namespace

std::vector<Period> volumesOfSlices(const Autocorrelation& correlation, double slice) {
  const double reach = reachOf(slice);
  std::vector<CorrelationPeak> peaks(1); // index k: after k slices
  if (slice >= 1)
    for (double lag = slice; lag + reach < static_cast<double>(correlation.largestLag()); lag += slice)
      peaks.push_back(correlation.peakNear(lag, reach));

  std::vector<Period> volumes;
  for (int level = 0; level < mostLevels; ++level) {
    const std::vector<double> contrasts = contrastsOf(peaks);
    size_t unit = 0;
    double highest = leastCombScore;
    for (size_t n = 2; n < contrasts.size() + 2; ++n)
      if (const double score = combScore(contrasts, n); score > highest) {
        highest = score;
        unit = n;
      }
    if (unit == 0) break;
    volumes.push_back({peaks[unit].lag, peaks[unit].value});
    std::vector<CorrelationPeak> teeth;
    for (size_t k = 0; k < peaks.size(); k += unit) teeth.push_back(peaks[k]);
    peaks = teeth;
  }
  return volumes;
}

bool isMadeOfSlices(double period, double slice) {
  const double count = std::round(period / slice);
  return count > 1 && std::fabs(period - count * slice) <= reachOf(slice);
}

} // namespace emeg
